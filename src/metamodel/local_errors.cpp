#include "metamodel/local_errors.h"

#include "metamodel/kernels/kernel_block.h"
#include "metamodel/kernels/kernels_constant.h"

#include <algorithm>
#include <cmath>

namespace corvath::math::metamodel {

namespace {

/// Weights of one block of rows: 512 KB stay in the second-level cache while they are summed.
constexpr Eigen::Index kErrorBlockWeights = Eigen::Index{1} << 16;
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

KernelConstInflIsoExp KernelOfRadius(double radius) {
  return KernelConstInflIsoExp(Eigen::VectorXd::Constant(1, radius));
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

/// The density kernel's radius; one point alone, whose radius is 0, still has a width.
double DensityRadius(double radius, Eigen::Index num_points, Eigen::Index num_inputs) {
  const auto n = static_cast<double>(num_points);
  const double bandwidth = std::max(radius * radius, static_cast<double>(num_inputs) / n / n);
  return std::sqrt(bandwidth * kDensityRadiusSquared);
}

}  // namespace

struct LocalErrors::Parts {
  Parts(const Eigen::MatrixXd& support, const Eigen::VectorXd& values,
        const Eigen::VectorXd& residuals, const ErrorRadii& radii)
      : has_inputs(support.cols() > 0),
        averages(residuals, IsConstant(values) ? 0.0 : SumOfSquaresAboutMean(values)),
        everywhere(1.0, 0.0, 0.0, 0.0),
        density_kernel(KernelOfRadius(
            has_inputs ? DensityRadius(radii.density, support.rows(), support.cols()) : 1.0)),
        error_kernel(KernelOfRadius(radii.local_error > 0.0 ? radii.local_error : 1.0)),
        density(density_kernel, support),
        nearness(error_kernel, support),
        ones(Eigen::VectorXd::Ones(support.rows())) {
    const double noise =
        IsConstant(values) ? HUGE_VAL : SumOfSquaresAboutMean(values) * kPerfectFit;
    if (noise > averages.GetSumOfSquares()) return;
    is_local = has_inputs && radii.local_error > 0.0;
    if (is_local)
      weights.resize(support.rows(), BlockRows());
    else
      everywhere = averages.Everywhere();
  }

  Eigen::Index BlockRows() const {
    return std::clamp<Eigen::Index>(kErrorBlockWeights / std::max<Eigen::Index>(ones.size(), 1), 1,
                                    kMaxBlockRows);
  }

  bool has_inputs;
  bool is_local = false;
  ResidualAverages averages;
  Eigen::RowVector4d everywhere;  ///< where errors are not local
  KernelConstInflIsoExp density_kernel;
  KernelConstInflIsoExp error_kernel;
  KernelBlock density;
  KernelBlock nearness;
  Eigen::VectorXd ones;
  Eigen::MatrixXd weights;  ///< one buffer for all blocks
};

LocalErrors::LocalErrors(const Eigen::MatrixXd& support, const Eigen::VectorXd& values,
                         const Eigen::VectorXd& residuals, const ErrorRadii& radii)
    : parts_(std::make_unique<Parts>(support, values, residuals, radii)) {}

LocalErrors::~LocalErrors() = default;

Eigen::Index LocalErrors::GetBlockRows() const {
  return parts_->BlockRows();
}

void LocalErrors::Evaluate(const Eigen::MatrixXd& x, Eigen::Ref<Eigen::MatrixXd> errors) {
  Parts& p = *parts_;
  if (p.has_inputs)
    p.density.WeightedSums(x, p.ones, errors.col(kDensity));
  else
    errors.col(kDensity).setOnes();
  if (!p.is_local) {
    errors.leftCols<4>().rowwise() = p.everywhere;
    return;
  }
  if (p.weights.cols() < x.rows()) p.weights.resize(p.weights.rows(), x.rows());
  p.nearness.Weights(x, p.weights.leftCols(x.rows()));
  errors.leftCols<4>() = p.averages.At(p.weights.leftCols(x.rows()));
}

}  // namespace corvath::math::metamodel
