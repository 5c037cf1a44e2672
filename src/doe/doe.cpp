#include "doe/doe.h"

#include "doe/correlation_exchange.h"
#include "doe/factorial.h"
#include "doe/fekete.h"
#include "doe/latin_hypercube.h"
#include "doe/orthogonal.h"
#include "doe/sobol.h"
#include "doe/space_filling.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

namespace corvath::math {
namespace {

using Eigen::Index;

void AppendRows(const Eigen::MatrixXd& points, DOE::Designs& designs) {
  designs.reserve(designs.size() + static_cast<std::size_t>(points.rows()));
  for (Index i = 0; i < points.rows(); ++i)
    designs.emplace_back(points.row(i).begin(), points.row(i).end());
}

}  // namespace

DOE::DOE() : DOE(static_cast<std::uint32_t>(std::time(nullptr))) {}

DOE::DOE(std::uint32_t seed) : generator_(seed) {}

DOE::DOE(std::uint64_t dimensions, std::uint32_t seed, StateLists state_lists)
    : numdimensions_(dimensions), state_lists_(std::move(state_lists)), generator_(seed) {
  if (!state_lists_.empty() && state_lists_.size() != dimensions)
    throw std::invalid_argument(std::to_string(state_lists_.size()) + " state lists for " +
                                std::to_string(dimensions) + " dimensions.");
  for (std::size_t k = 0; k < state_lists_.size(); ++k)
    if (!state_lists_[k].allFinite())
      throw std::invalid_argument("A state of dimension " + std::to_string(k) +
                                  " is not a finite number.");
}

DOE::DOE(const Eigen::Ref<const Eigen::MatrixXd>& matrix, std::uint32_t seed) : generator_(seed) {
  SetMatrix(matrix);
}

void DOE::Build(std::int32_t type, std::uint64_t level, bool append) {
  if (numdimensions_ == 0) return;
  if (IsGridScheme(type)) {
    GridSample sample = MakeGridSample(type, numdimensions_, level, state_lists_);
    if (!append) designs_.clear();
    std::move(sample.rows.begin(), sample.rows.end(), std::back_inserter(designs_));
    if (sample.sorted) {
      std::sort(designs_.begin(), designs_.end());
      designs_.erase(std::unique(designs_.begin(), designs_.end()), designs_.end());
    }
    return;
  }
  Designs before;
  if (!append) designs_.swap(before);
  try {
    BuildSequence(type, level, append);
  } catch (...) {
    if (!append) designs_.swap(before);
    throw;
  }
}

void DOE::BuildSequence(std::int32_t type, std::uint64_t n, bool append) {
  constexpr std::uint64_t kTrials = 5;
  constexpr double kTolerance = 0.01;
  switch (type) {
    case kPlainMonteCarlo:
    case kLatinHypercube:
    case kLatinHypercubeMidpoint:
      BuildRandom(type, n);
      break;
    case kOrthogonalLatinHypercube:
      BuildOrthogonal(n, kTrials, kTolerance);
      break;
    case kSobolSequence:
      BuildSobol(n);
      break;
    case kFeketePoints:
      CheckNewPoints(n);
      if (n > 0)
        AppendRows(
            FeketePoints(generator_, static_cast<Index>(n), static_cast<Index>(numdimensions_))
                .transpose(),
            designs_);
      break;
    case kSpaceFillingLatinHypercube:
      BuildSpaceFilling(n, append);
      break;
    case kAdvancedLatinHypercube:
      BuildAdvanced(n);
      break;
    case kDOptimalCustomizable:
    case kDOptimalLinear:
    case kDOptimalQuadraticNoMixed:
    case kDOptimalQuadratic:
      throw std::logic_error("Can not build d-optimal in classic DOE");
    default:
      break;
  }
}

void DOE::BuildRandom(std::int32_t type, std::uint64_t n) {
  CheckNewPoints(n);
  const std::uint64_t first = designs_.size();
  if (type == kPlainMonteCarlo) {
    designs_.reserve(first + n);
    for (std::uint64_t i = 0; i < n; ++i) {
      auto& point = designs_.emplace_back(numdimensions_);
      for (double& x : point) x = DrawUniform(generator_, -1.0, 1.0);
    }
  } else if (n > 0) {
    AppendRows(LatinHypercube(generator_, static_cast<Index>(n), static_cast<Index>(numdimensions_),
                              type == kLatinHypercubeMidpoint),
               designs_);
  }
  MapStates(first);
}

void DOE::BuildSobol(std::uint64_t n) {
  const std::uint64_t first = designs_.size();
  if (n == 0) return;
  if (n > kMaxSobolIndex) CheckSobol(n, numdimensions_);  // before the sum can wrap
  CheckSobol(first + n, numdimensions_);
  CheckNewPoints(n);
  designs_.reserve(first + n);
  // The point with the index 0 is left out: a corner of the space.
  for (std::uint64_t i = 0; i < n; ++i)
    SobolCoordinates(first + 1 + i, numdimensions_, designs_.emplace_back(numdimensions_).data());
  MapStates(first);
}

void DOE::BuildOrthogonal(std::uint64_t n, std::uint64_t trials, double tolerance) {
  if (numdimensions_ == 0 || n == 0) return;
  if (trials == 0) throw std::invalid_argument("An orthogonal sample takes at least one trial.");
  CheckNewPoints(n);
  CheckSampleSize(numdimensions_, numdimensions_);  // the correlations
  const std::uint64_t first = designs_.size();
  AppendRows(OrthogonalLatinHypercube(generator_, static_cast<Index>(n),
                                      static_cast<Index>(numdimensions_), trials, tolerance),
             designs_);
  MapStates(first);
}

void DOE::BuildSpaceFilling(std::uint64_t n, bool append) {
  constexpr std::uint64_t kMostDimensions = 20;
  constexpr std::uint64_t kMostPoints = 4999;
  if (numdimensions_ == 0) return;
  const std::uint64_t before = append ? designs_.size() : 0;
  const bool improve = numdimensions_ <= kMostDimensions && n >= 2 && n <= kMostPoints;
  if (improve && before > 0) CheckSampleSize(before + n, n);  // the distances
  Build(kOrthogonalLatinHypercube, n, append);
  if (!improve) return;
  // An exchange takes O(n): the budgets bound the whole.
  const auto passes = [n](std::uint64_t budget, std::uint64_t most) {
    return static_cast<int>(std::clamp<std::uint64_t>(budget / n, 10, most));
  };
  if (before == 0 && !HasStates())
    SetRows(LowerDiscrepancy(generator_, GetMatrix(), passes(12500, 100)));
  else
    SetRows(
        LowerEnergy(generator_, GetMatrix(), static_cast<Index>(before), 500 * passes(50000, 200)));
}

void DOE::BuildAdvanced(std::uint64_t n) {
  constexpr double kTolerance = 0.001;
  const std::uint64_t d = numdimensions_;
  const std::uint64_t before = designs_.size();
  BuildOrthogonal(n, d >= 2 && d <= 9 ? 58 - 4 * d : 20, kTolerance);
  if (d > 0 && n > 1)
    SetRows(LowerCorrelations(generator_, GetMatrix(), static_cast<Index>(before), kTolerance));
}

void DOE::CheckNewPoints(std::uint64_t n) const {
  CheckSampleSize(n, numdimensions_);
  CheckSampleSize(designs_.size() + n, numdimensions_);
}

void DOE::MapStates(std::uint64_t first_row) {
  for (std::size_t k = 0; k < state_lists_.size(); ++k) {
    const Eigen::VectorXd& states = state_lists_[k];
    if (states.size() == 0) continue;
    for (std::size_t i = first_row; i < designs_.size(); ++i) {
      const double position =
          std::floor((designs_[i][k] + 1.0) / 2.0 * static_cast<double>(states.size()));
      designs_[i][k] =
          states(std::clamp<Index>(static_cast<Index>(position), 0, states.size() - 1));
    }
  }
}

bool DOE::HasStates() const {
  return std::any_of(state_lists_.begin(), state_lists_.end(),
                     [](const auto& states) { return states.size() != 0; });
}

Eigen::MatrixXd DOE::GetMatrix() const {
  Eigen::MatrixXd matrix(designs_.size(), numdimensions_);
  for (std::size_t i = 0; i < designs_.size(); ++i)
    matrix.row(static_cast<Index>(i)) = Eigen::Map<const Eigen::RowVectorXd>(
        designs_[i].data(), static_cast<Index>(numdimensions_));
  return matrix;
}

void DOE::SetRows(const Eigen::MatrixXd& matrix) {
  designs_.clear();
  AppendRows(matrix, designs_);
}

void DOE::SetMatrix(const Eigen::Ref<const Eigen::MatrixXd>& matrix) {
  const auto columns = static_cast<std::uint64_t>(matrix.cols());
  if (columns != numdimensions_) state_lists_.clear();
  numdimensions_ = columns;
  SetRows(matrix);
}

}  // namespace corvath::math
