#include "doe/factorial.h"

#include "doe/box_behnken.h"
#include "doe/level_lists.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace corvath::math {
namespace {

using Rows = std::vector<std::vector<double>>;

std::uint64_t Times(std::uint64_t a, std::uint64_t b) {
  std::uint64_t product = 0;
  return __builtin_mul_overflow(a, b, &product) ? std::numeric_limits<std::uint64_t>::max()
                                                : product;
}

std::vector<double> FirstLevels(const LevelLists& lists) {
  std::vector<double> row;
  for (const auto& levels : lists) row.push_back(levels.front());
  return row;
}

/// All combinations, the levels of dimension 0 running fastest.
void AddFactorial(const LevelLists& lists, Rows& rows) {
  std::uint64_t count = 1;
  for (const auto& levels : lists) count = Times(count, levels.size());
  CheckSampleSize(count, lists.size());
  rows.reserve(rows.size() + count);
  std::vector<std::size_t> index(lists.size(), 0);
  std::vector<double> row = FirstLevels(lists);
  for (std::uint64_t i = 0; i < count; ++i) {
    rows.push_back(row);
    for (std::size_t k = 0; k < lists.size(); ++k) {
      index[k] = index[k] + 1 == lists[k].size() ? 0 : index[k] + 1;
      row[k] = lists[k][index[k]];
      if (index[k] != 0) break;
    }
  }
}

/// The other levels of each dimension by themselves, level after level, then the first levels.
void AddAxial(const LevelLists& lists, Rows& rows) {
  const std::vector<double> origin = FirstLevels(lists);
  for (std::size_t level = 1; level < lists.front().size(); ++level)
    for (std::size_t k = 0; k < lists.size(); ++k) {
      rows.push_back(origin);
      rows.back()[k] = lists[k][level];
    }
  rows.push_back(origin);
}

/// The other levels of each dimension by themselves, dimension after dimension, then the middle.
void AddStar(const LevelLists& lists, Rows& rows) {
  const std::size_t n = lists.front().size();
  const std::size_t middle = (n + 1) / 2 - 1;
  std::vector<double> centre;
  for (const auto& levels : lists) centre.push_back(levels[middle]);
  for (std::size_t k = 0; k < lists.size(); ++k)
    for (std::size_t level = 0; level < n; ++level) {
      if (level == middle) continue;
      rows.push_back(centre);
      rows.back()[k] = lists[k][level];
    }
  rows.push_back(centre);
}

/// For each pair of dimensions their second levels, the others at their first.
void AddMixedTerms(const LevelLists& lists, Rows& rows) {
  const std::vector<double> origin = FirstLevels(lists);
  for (std::size_t i = 0; i < lists.size(); ++i)
    for (std::size_t j = i + 1; j < lists.size(); ++j) {
      rows.push_back(origin);
      rows.back()[i] = lists[i][1];
      rows.back()[j] = lists[j][1];
    }
}

class GridBuilder {
 public:
  GridBuilder(std::uint64_t dimensions, const StateLists& state_lists)
      : dimensions_(dimensions), state_lists_(state_lists) {}

  GridSample Take() { return std::move(sample_); }

  void Center() {
    CheckSampleSize(1, dimensions_);
    sample_.rows.push_back(FirstLevels(Levels({0, 1, 0}, false)));
  }

  void FullFactorial(std::uint64_t level) {
    if (level < 2) return;
    CheckLevels(level);
    AddFactorial(Levels({1, level - 2, 1}, false), sample_.rows);
  }

  void Axial(std::uint64_t level) {
    if (level == 0) return;
    CheckSampleSize(Times(level, dimensions_), dimensions_);
    AddAxial(Levels({0, level, 1}, true), sample_.rows);
    sample_.sorted = true;
  }

  void Star(std::uint64_t level) {
    if (level == 0) return;
    CheckSampleSize(Times(Times(2, level), dimensions_), dimensions_);
    LevelLists lists = Levels({1, 2 * level - 1, 1}, true);
    for (auto& levels : lists) std::swap(levels[level], levels[SmallestMagnitude(levels)]);
    AddStar(lists, sample_.rows);
    sample_.sorted = true;
  }

  void Koshal(std::uint64_t degree) {
    if (degree > 2)
      throw std::domain_error(
          "Koshal designs not supported for polynomial degree higher than quadratic");
    if (degree == 1) Axial(1);
    if (degree != 2) return;
    if (SmallestStateCount() < 2)
      throw std::domain_error("Koshal quadratic designs only supported for at least three levels");
    CheckPairs();
    AddStar(Levels({1, 1, 1}, true), sample_.rows);
    AddMixedTerms(Levels({0, 1, 1}, false), sample_.rows);
  }

  void CentralComposite() {
    CheckSampleSize(Times(2, dimensions_), dimensions_);
    AddStar(Levels({1, 1, 1}, true), sample_.rows);
    AddFactorial(Levels({1, 0, 1}, false), sample_.rows);
  }

  void MixedTerms(std::uint64_t level) {
    if (level > 2)
      throw std::domain_error(
          "Mixed terms not supported for polynomial degree higher than quadratic");
    if (level < 2) return;
    CheckPairs();
    // A single state is its own second level.
    AddMixedTerms(Levels({0, 1, 1}, true), sample_.rows);
  }

  void BoxBehnken() {
    if (dimensions_ < 3)
      throw std::domain_error("Box-Behnken designs only supported for at least three factors");
    if (SmallestStateCount() < 3)
      throw std::domain_error("Box-Behnken designs only supported for at least three levels");
    CheckSampleSize(CountBoxBehnken(dimensions_), dimensions_);
    const LevelLists lists = Levels({1, 1, 1}, true);
    for (const auto& indices : math::BoxBehnken(dimensions_, /*centre_points=*/false)) {
      auto& row = sample_.rows.emplace_back(dimensions_);
      for (std::size_t k = 0; k < dimensions_; ++k) row[k] = lists[k][indices[k] - 1];
    }
  }

  std::uint64_t LargestStateCount() const {
    std::uint64_t largest = 0;
    for (const auto& states : state_lists_)
      largest = std::max(largest, static_cast<std::uint64_t>(states.size()));
    return largest;
  }

 private:
  LevelLists Levels(const LevelTriple& triple, bool extend) const {
    return MakeLevelLists(dimensions_, state_lists_, triple, extend);
  }

  std::uint64_t SmallestStateCount() const {
    std::uint64_t smallest = std::numeric_limits<std::uint64_t>::max();
    for (const auto& states : state_lists_)
      if (states.size() != 0)
        smallest = std::min(smallest, static_cast<std::uint64_t>(states.size()));
    return smallest;
  }

  /// Before even the levels of a continuous dimension are listed.
  void CheckLevels(std::uint64_t level) const {
    CheckSampleSize(1, dimensions_);
    std::uint64_t count = 1;
    for (std::size_t k = 0; k < dimensions_; ++k) {
      const auto states =
          state_lists_.empty() ? 0 : static_cast<std::uint64_t>(state_lists_[k].size());
      count = Times(count, states == 0 ? level : std::min(level, states));
    }
    CheckSampleSize(count, dimensions_);
  }

  void CheckPairs() const { CheckSampleSize(Times(dimensions_, dimensions_) / 2, dimensions_); }

  std::uint64_t dimensions_;
  const StateLists& state_lists_;
  GridSample sample_;
};

}  // namespace

bool IsGridScheme(std::int32_t type) {
  switch (type) {
    case kCenterPoint:
    case kFullFactorial:
    case kAxialPoints:
    case kStarPoints:
    case kKoshal:
    case kCentralComposite:
    case kMixedTerms:
    case kKoshalLinear:
    case kKoshalQuadratic:
    case kBoxBehnken:
    case kFullCombinatorial:
      return true;
    default:
      return false;
  }
}

GridSample MakeGridSample(std::int32_t type, std::uint64_t dimensions, std::uint64_t level,
                          const StateLists& state_lists) {
  GridBuilder builder(dimensions, state_lists);
  switch (type) {
    case kCenterPoint:
      builder.Center();
      break;
    case kFullFactorial:
      builder.FullFactorial(level);
      break;
    case kAxialPoints:
      builder.Axial(level);
      break;
    case kStarPoints:
      builder.Star(level);
      break;
    case kKoshal:
      builder.Koshal(level);
      break;
    case kKoshalLinear:
      builder.Koshal(1);
      break;
    case kKoshalQuadratic:
      builder.Koshal(2);
      break;
    case kCentralComposite:
      builder.CentralComposite();
      break;
    case kMixedTerms:
      builder.MixedTerms(level);
      break;
    case kBoxBehnken:
      builder.BoxBehnken();
      break;
    case kFullCombinatorial:
      builder.FullFactorial(std::max<std::uint64_t>(builder.LargestStateCount(), 2));
      break;
    default:
      break;
  }
  return builder.Take();
}

}  // namespace corvath::math
