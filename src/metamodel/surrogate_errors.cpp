#include "foundation/exception.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/surrogate.h"
#include "stochastics/sample_statistics.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <stdexcept>

/// What SurrogateBase says about its own quality: residuals, density and local errors.
namespace corvath::math::metamodel {

namespace {

/// Weights of one block of rows: 512 KB stay in the second-level cache while they are summed.
constexpr Eigen::Index kBlockWeights = Eigen::Index{1} << 16;
constexpr Eigen::Index kMaxBlockRows = 256;

/// A support point at the density radius h counts 0.01; a kernel weighs 0.001 at its own radius,
/// whose square is then h^2 ln(0.001) / ln(0.01).
constexpr double kDensityRadiusSquared = 1.5;

/// Below this part of the total variation the residuals count as rounding noise.
constexpr double kPerfectFit = 1e-12;

bool IsConstant(const Eigen::VectorXd& values) {
  return values.size() == 0 || (values.array() == values(0)).all();
}

double SumOfSquaresAboutMean(const Eigen::VectorXd& values) {
  return (values.array() - values.mean()).square().sum();
}

/// Averages of the residuals: over all of them, or weighted by nearness.
class ResidualAverages {
 public:
  ResidualAverages(const Eigen::VectorXd& residuals, double sum_of_squares_total)
      : sst_(sum_of_squares_total), residuals_(residuals.size(), 3) {
    residuals_.col(0) = residuals.array().square();
    residuals_.col(1) = residuals;
    residuals_.col(2) = residuals.array().abs();
  }

  double GetSumOfSquares() const { return residuals_.col(0).sum(); }

  /// Columns 0 to 3 of the errors, one row for each column of `weights` of the support points.
  Eigen::MatrixX4d At(const Eigen::Ref<const Eigen::MatrixXd>& weights) const {
    const Eigen::ArrayXd total = weights.colwise().sum().transpose();
    Eigen::MatrixX3d mean = weights.transpose() * residuals_;
    mean.array().colwise() /= total;
    Eigen::MatrixX4d columns(weights.cols(), 4);
    for (Eigen::Index i = 0; i < columns.rows(); ++i) {
      const double unexplained = mean(i, 0) / sst_ * static_cast<double>(residuals_.rows());
      columns.row(i) << NotNegative(1.0 - unexplained), std::sqrt(mean(i, 0)), mean(i, 1),
          mean(i, 2);
    }
    return columns;
  }

  /// The same without weights, one row for all points.
  Eigen::RowVector4d Everywhere() const {
    const auto n = static_cast<double>(residuals_.rows());
    const Eigen::RowVector3d sum = residuals_.colwise().sum();
    return {NotNegative(1.0 - sum(0) / sst_), std::sqrt(sum(0) / n), sum(1) / n, sum(2) / n};
  }

 private:
  static double NotNegative(double cop) { return cop < 0.0 ? 0.0 : cop; }  // NaN passes

  double sst_;
  Eigen::MatrixX3d residuals_;  ///< squares, values, magnitudes
};

}  // namespace

Eigen::VectorXd SurrogateBase::ApproximatePrognosis() const {
  if (points_.size() == 0 || values_.size() == 0)
    throw std::logic_error("Surrogate: support point data is missing");
  if (residuals_.size() == values_.size()) return values_ - residuals_;
  if (subsets_.size() == values_.size()) return ApproximateCrossValidation(subsets_);
  return ApproximateLeaveOneOut();
}

void SurrogateBase::BuildRadii() {
  const Eigen::MatrixXd& points = points_trans_reduced_;
  if (points.rows() == 0 || points.cols() == 0) return;
  const Eigen::Index nearest = 2 * points.cols() + 1;
  const Eigen::Index local = std::min<Eigen::Index>(points.rows(), 50);
  const double gap = statistics::LargestGaps(points).maxCoeff();
  points_radii_mean_ = std::max(statistics::KthNearest(points, nearest).mean(), 0.1 * gap);
  weight_error_radius_ = std::max(statistics::KthNearest(points, local).mean(), gap);
}

void SurrogateBase::BeginBuildErrors() {
  if (need_build_ || NeedsBuild(trans_coord_) || NeedsBuild(trans_value_))
    throw std::logic_error("Surrogate::BuildErrors - need build first");
  if (points_radii_mean_ == 0.0 || weight_error_radius_ == 0.0) BuildRadii();
}

bool SurrogateBase::BuildErrors() {
  BeginBuildErrors();
  if (residuals_.size() != values_.size()) residuals_ = values_ - ApproximatePrognosis();
  return true;
}

bool SurrogateBase::BuildErrors(const IndexVector& subsets) {
  BeginBuildErrors();
  const bool same_groups = subsets.size() == subsets_.size() && subsets == subsets_ &&
                           (subsets.size() == 0 || subsets.size() == values_.size());
  if (residuals_.size() == values_.size() && same_groups) return true;
  // Computed first: a refused request leaves the stored groups and residuals alone.
  Eigen::VectorXd residuals = values_ - ApproximateCrossValidation(subsets);
  subsets_ = subsets;
  residuals_ = std::move(residuals);
  return true;
}

void SurrogateBase::SetErrors(const Eigen::VectorXd& residuals, const IndexVector& subsets) {
  if (residuals.size() != values_.size() || subsets.size() != values_.size())
    throw std::logic_error("Surrogate::SetErrors - one residual and one group per support point");
  BeginBuildErrors();
  residuals_ = residuals;
  subsets_ = subsets;
}

Eigen::MatrixXd SurrogateBase::ApproximateErrors(const ConstPoints& points) const {
  if (points.cols() != GetNumberInputs()) {
    std::wostringstream message;
    message << L"Surrogate approximate errors needs same number of input dimension ("
            << points.cols() << L") as support points (" << GetNumberInputs() << L")";
    throw utils::runtime_error(message.str());
  }
  if (residuals_.size() != values_.size())
    throw utils::runtime_error(L"Surrogate ApproximateErrors needs BuildErrors first");
  const BitVector selection = GetVariableSelection();
  const Eigen::MatrixXd& support = points_trans_reduced_;
  const Eigen::Index r = support.cols();
  const Eigen::Index num_support = support.rows();
  if (CountBits(selection) != static_cast<std::uint64_t>(r) ||
      (r > 0 && num_support != values_.size()))
    throw utils::runtime_error(
        L"Surrogate ApproximateErrors: internal support point table has wrong dimension");

  Eigen::MatrixXd errors = Eigen::MatrixXd::Zero(points.rows(), kNumErrorColumns);
  errors.col(kLocalCoP).setOnes();
  if (r == 0) errors.col(kDensity).setOnes();

  bool has_errors = !IsConstant(values_);
  const double sst = has_errors ? SumOfSquaresAboutMean(values_) : 0.0;
  const ResidualAverages averages(residuals_, sst);
  if (sst * kPerfectFit > averages.GetSumOfSquares()) has_errors = false;
  const bool local = has_errors && r >= 1 && weight_error_radius_ > 0.0;
  if (has_errors && !local) errors.leftCols<4>().rowwise() = averages.Everywhere();
  if (r == 0) return errors;

  const auto n = static_cast<double>(num_support);
  const double bandwidth =
      std::max(points_radii_mean_ * points_radii_mean_, static_cast<double>(r) / n / n);
  const KernelConstInflIsoExp density_kernel(
      Eigen::VectorXd::Constant(1, std::sqrt(bandwidth * kDensityRadiusSquared)));
  KernelBlock density(density_kernel, support);
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(num_support);
  const KernelConstInflIsoExp error_kernel(
      Eigen::VectorXd::Constant(1, local ? weight_error_radius_ : 1.0));
  const KernelBlock nearness(error_kernel, support);

  const Eigen::Index block_rows =
      std::clamp<Eigen::Index>(kBlockWeights / num_support, 1, kMaxBlockRows);
  Eigen::MatrixXd weights(local ? num_support : 0, block_rows);
  Eigen::MatrixXd block;
  Eigen::MatrixXd x;
  for (Eigen::Index begin = 0; begin < points.rows(); begin += block_rows) {
    const Eigen::Index rows = std::min(block_rows, points.rows() - begin);
    block = points.middleRows(begin, rows);
    if (trans_coord_) trans_coord_->ForwardInPlace(block);
    ReduceColumns(block, selection, x);
    density.WeightedSums(x, ones, errors.col(kDensity).segment(begin, rows));
    if (!local) continue;
    nearness.Weights(x, weights.leftCols(rows));
    errors.middleRows(begin, rows).leftCols<4>() = averages.At(weights.leftCols(rows));
  }
  return errors;
}

}  // namespace corvath::math::metamodel
