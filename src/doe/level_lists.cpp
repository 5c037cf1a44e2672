#include "doe/level_lists.h"

#include <algorithm>
#include <cmath>

namespace corvath::math {
namespace {

std::vector<double> ContinuousLevels(const LevelTriple& triple) {
  const std::uint64_t n = triple.Total();
  if (n == 1) return {0.0};
  const double start = triple.lower != 0 ? -1.0 : 0.0;
  std::vector<double> levels(n);
  for (std::uint64_t k = 0; k < n; ++k)
    levels[k] = start + static_cast<double>(k) * (1.0 - start) / static_cast<double>(n - 1);
  return levels;
}

/// Takes the state nearest to `value` out of the ascending pool, the lower of two as near.
double TakeNearest(std::vector<double>& pool, double value) {
  const auto nearest = std::min_element(pool.begin(), pool.end(), [value](double a, double b) {
    return std::abs(a - value) < std::abs(b - value);
  });
  const double state = *nearest;
  pool.erase(nearest);
  return state;
}

/// The state that stands for the middle: of the smallest magnitude, and of -1 and 1 the latter.
double MiddleState(const std::vector<double>& states) {
  const double smallest = states[SmallestMagnitude(states)];
  const bool has_one = std::find(states.begin(), states.end(), 1.0) != states.end();
  return std::abs(smallest) >= 1.0 && has_one ? 1.0 : smallest;
}

/// Chooses among more states than there are levels.
std::vector<double> ChosenStates(const std::vector<double>& states, const LevelTriple& triple) {
  const double first = states.front();
  const double last = states.back();
  std::vector<double> pool = states;
  std::vector<double> levels;
  if (triple.lower != 0) {
    levels.push_back(first);
    pool.erase(pool.begin());
  }
  if (triple.upper != 0) pool.pop_back();
  if (triple.inner == 1) {
    levels.push_back(MiddleState(states));
  } else {
    const double step = (last - first) / static_cast<double>(triple.inner + 1);
    for (std::uint64_t k = 1; k <= triple.inner; ++k)
      levels.push_back(TakeNearest(pool, first + static_cast<double>(k) * step));
  }
  if (triple.upper != 0) levels.push_back(last);
  return levels;
}

}  // namespace

LevelLists MakeLevelLists(std::uint64_t dimensions, const StateLists& state_lists,
                          const LevelTriple& triple, bool extend) {
  const std::uint64_t n = triple.Total();
  LevelLists lists(dimensions);
  for (std::size_t k = 0; k < dimensions; ++k) {
    if (state_lists.empty() || state_lists[k].size() == 0) {
      lists[k] = ContinuousLevels(triple);
      continue;
    }
    lists[k].assign(state_lists[k].begin(), state_lists[k].end());
    const std::size_t size = lists[k].size();
    if (size > n)
      lists[k] = ChosenStates(lists[k], triple);
    else if (extend)
      while (lists[k].size() < n) lists[k].push_back(lists[k][lists[k].size() - size]);
  }
  return lists;
}

std::size_t SmallestMagnitude(const std::vector<double>& levels) {
  const auto smallest = std::min_element(
      levels.begin(), levels.end(), [](double a, double b) { return std::abs(a) < std::abs(b); });
  return static_cast<std::size_t>(smallest - levels.begin());
}

}  // namespace corvath::math
