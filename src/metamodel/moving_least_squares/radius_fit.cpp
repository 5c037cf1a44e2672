#include "metamodel/cross_validation_groups.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/moving_least_squares/local_fits.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/moving_least_squares/radius_range.h"
#include "stochastics/sample_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

// The kernel radius of a moving least squares model, and what its inputs contribute.

namespace corvath::math::metamodel {

namespace {

constexpr int kScanSteps = 20;

double SumOfSquares(const Eigen::VectorXd& values, const Eigen::VectorXd& predictions) {
  if (predictions.size() != values.size()) return std::numeric_limits<double>::quiet_NaN();
  return (values - predictions).squaredNorm();
}

bool IsConstant(const Eigen::VectorXd& values) {
  return (values.array() == values(0)).all();
}

}  // namespace

double MovingLeastSquares::MeasureOf(const KernelBase& kernel,
                                     const Eigen::MatrixXd& squared_distances,
                                     const IndexVector& groups) const {
  const Eigen::Index n = values_trans_.size();
  const bool is_average = settings_.GetOrder() == 0;
  const Eigen::MatrixXd no_basis(n, 0);
  const Eigen::MatrixXd& basis = is_average ? no_basis : coefficient_matrix_;
  LocalFits fits(basis, values_trans_);
  const Eigen::Index block_size = std::min(fits.GetBlockSize(), n);
  Eigen::MatrixXd weights(n, block_size);
  Eigen::VectorXd fitted(n);
  Eigen::VectorXd validated(n);
  for (Eigen::Index begin = 0; begin < n; begin += block_size) {
    PassInterruptionPoint();
    const Eigen::Index rows = std::min(block_size, n - begin);
    auto block = weights.leftCols(rows);
    for (Eigen::Index i = 0; i < rows; ++i)
      block.col(i) = kernel.EvaluateDistances(squared_distances.col(begin + i));
    fits.Predict(block, basis.middleRows(begin, rows), false, fitted.segment(begin, rows));
    RemoveGroups(groups, begin, block);
    fits.Predict(block, basis.middleRows(begin, rows), true, validated.segment(begin, rows));
  }
  BackTransform(fitted);
  BackTransform(validated);
  return 2.0 * SumOfSquares(values_, validated) - SumOfSquares(values_, fitted);
}

bool MovingLeastSquares::BuildOptimal(const IndexVector& subsets) {
  PassInterruptionPoint();
  if (trans_value_)
    BuildBoxCox();
  else
    Build();
  residuals_.resize(0);
  if (!IsBuilt() || GetNumberPoints() == 0) return false;  // a file may leave the points out
  RequireSameSupport();
  const IndexVector groups = GroupsOrPoints(subsets, values_.size());
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  if (!kernel->IsIsotropic()) return false;
  if (kernel->GetParameterCount() == 0) return true;
  if (kernel->GetParameterCount() > 1) return false;
  const Eigen::MatrixXd squared = statistics::SquaredDistances(points_trans_reduced_);
  const auto range = FindRadiusRange(points_trans_reduced_, squared);
  if (!range) return false;

  const double widest = 5.0 * range->diameter;
  double best_radius = widest;  // also where no radius of the scan has a measure
  if (!IsConstant(values_)) {
    double best_measure = std::numeric_limits<double>::max();
    const double lower = std::log(2.0 * range->smallest);
    const double upper = std::log(widest);
    for (int step = 0; step <= kScanSteps; ++step) {
      PassInterruptionPoint();
      const double radius = std::exp(lower + (upper - lower) * step / kScanSteps);
      kernel->SetParameters(Eigen::VectorXd::Constant(1, radius));
      const double measure = MeasureOf(*kernel, squared, groups);
      if (!(measure < best_measure)) continue;  // neither is a NaN
      best_measure = measure;
      best_radius = radius;
    }
  }
  settings_.SetKernelParameter(Eigen::VectorXd::Constant(1, best_radius));
  settings_.SetState(SettingsState::kOptimized);
  return true;
}

namespace {

/// `settings` without input j; a kernel with a radius per input loses that radius.
MovingLeastSquaresSettings WithoutInput(const MovingLeastSquaresSettings& settings, std::size_t j) {
  MovingLeastSquaresSettings reduced = settings;
  const BitVector selection = settings.GetVariableSelection();
  BitVector rest = selection;
  rest[j] = false;
  reduced.SetVariableSelection(rest);
  if (settings.GetKernelType() != KernelType::kConstInflExp) return reduced;
  if (CountBits(rest) == 0) {  // no distance is left, and any kernel weighs 1
    reduced.SetKernelType(KernelType::kConstInflIsoExp);
    reduced.SetKernelParameter(Eigen::VectorXd::Ones(1));
    return reduced;
  }
  std::vector<double> radii;
  Eigen::Index next = 0;
  for (std::size_t input = 0; input < selection.size(); ++input) {
    if (!selection[input]) continue;
    if (next < settings.GetKernelParameter().size() && input != j)
      radii.push_back(settings.GetKernelParameter()(next));
    ++next;
  }
  reduced.SetKernelParameter(
      Eigen::Map<Eigen::VectorXd>(radii.data(), static_cast<Eigen::Index>(radii.size())));
  return reduced;
}

}  // namespace

Eigen::VectorXd MovingLeastSquares::ComputeSingleCoPs(const IndexVector& subsets) const {
  RequireValues();
  const double unexplained = SumOfSquares(values_, ApproximateCrossValidation(subsets));
  const double total = (values_.array() - values_.mean()).square().sum();
  const BitVector selection = GetVariableSelection();
  Eigen::VectorXd cops = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(selection.size()));
  const std::unique_ptr<MovingLeastSquares> reduced(Clone());
  for (std::size_t j = 0; j < selection.size(); ++j) {
    if (!selection[j]) continue;
    PassInterruptionPoint();
    reduced->SetSettings(WithoutInput(settings_, j));
    const Eigen::VectorXd predictions =
        reduced->Build() ? reduced->ApproximateCrossValidation(subsets) : Eigen::VectorXd();
    cops(static_cast<Eigen::Index>(j)) = (SumOfSquares(values_, predictions) - unexplained) / total;
  }
  return cops;
}

}  // namespace corvath::math::metamodel
