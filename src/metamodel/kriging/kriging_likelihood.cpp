#include "foundation/constants.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/kriging/definite_factor.h"
#include "metamodel/kriging/ordinary_kriging.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

// Correlation matrix, generalised least squares and likelihood of a kriging model.

namespace corvath::math::metamodel {

namespace {

/// A constant response has no variance; its logarithm is taken here.
constexpr double kSmallestVariance = 1e-50;

/// Columns of the correlation matrix that are formed at once.
constexpr Eigen::Index kBlockColumns = 64;

}  // namespace

void OrdinaryKriging::BuildCorrelation(const Eigen::MatrixXd& points,
                                       Eigen::MatrixXd& correlation) const {
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  const Eigen::Index n = points.rows();
  correlation.resize(n, n);
  if (kernel->IsConstantInfluence()) {
    const KernelBlock block(*kernel, points);
    for (Eigen::Index begin = 0; begin < n; begin += kBlockColumns) {
      const Eigen::Index columns = std::min(kBlockColumns, n - begin);
      block.Weights(points.middleRows(begin, columns),
                    correlation.block(0, begin, begin + columns, columns));
    }
  } else if (points.cols() == 0) {
    correlation.setConstant(kNaN);  // no point is far enough from another to give a radius
  } else {
    // A nodal radius follows the points that it is given: here the one point of the pair.
    Eigen::VectorXd weight(1);
    for (Eigen::Index j = 0; j < n; ++j)
      for (Eigen::Index i = 0; i < j; ++i) {
        kernel->Weights(weight, points.row(i).transpose(), points.row(j));
        correlation(i, j) = weight(0);
      }
  }
  correlation.triangularView<Eigen::StrictlyLower>() = correlation.transpose();
  correlation.diagonal().setConstant(settings_.GetNugget() + 1.0);
}

void OrdinaryKriging::BuildCorrelationOfDistances(const Eigen::MatrixXd& squared,
                                                  Eigen::MatrixXd& correlation) const {
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  const Eigen::Index n = squared.rows();
  correlation.resize(n, n);
  for (Eigen::Index j = 0; j < n; ++j)
    correlation.col(j).tail(n - 1 - j) = kernel->EvaluateDistances(squared.col(j).tail(n - 1 - j));
  correlation.diagonal().setConstant(settings_.GetNugget() + 1.0);
}

bool OrdinaryKriging::Solve(const Eigen::MatrixXd& correlation, DefiniteFactor& factor) {
  residuals_.resize(0);
  if (!factor.Compute(correlation)) return false;
  // Measured from one of them: the same weights with less rounding, and none for a constant.
  const double level = values_trans_(0);
  const Eigen::VectorXd y = values_trans_.array() - level;
  Eigen::MatrixXd solutions(y.size(), 2);
  solutions << y, Eigen::VectorXd::Ones(y.size());
  solutions = factor.Solve(solutions);
  const double mean = solutions.col(0).sum() / solutions.col(1).sum();
  kernel_weights_ = solutions.col(0) - mean * solutions.col(1);
  mean_ = level + mean;
  const auto n = static_cast<double>(y.size());
  sigma2_ = y.dot(kernel_weights_) / n;
  const double variance = sigma2_ > kSmallestVariance ? sigma2_ : kSmallestVariance;
  likelihood_ = 0.5 * (n * std::log(variance) + factor.LogDeterminant());
  need_build_ = false;
  return true;
}

Eigen::VectorXd OrdinaryKriging::LikelihoodGradient() {
  if (!Build()) throw std::logic_error("Kriging: the likelihood needs a model that can be built");
  RequireConsistent();
  Eigen::MatrixXd correlation;
  BuildCorrelation(points_trans_reduced_, correlation);
  DefiniteFactor factor;
  if (!factor.Compute(correlation)) throw std::logic_error("rebuild of correlation matrix failed");
  return LikelihoodGradient(correlation, factor);
}

/// With C^-1 (y - mu 1) = w the derivative for dC is tr(C^-1 dC) / 2 - w' dC w / (2 sigma^2): the
/// sum of the entries of dC times those of S = C^-1 / 2 - w w' / (2 sigma^2), one S for all
/// parameters. Below the floor of the variance the second term does not count.
Eigen::VectorXd OrdinaryKriging::LikelihoodGradient(const Eigen::MatrixXd& correlation,
                                                    const DefiniteFactor& factor) const {
  const Eigen::MatrixXd& x = points_trans_reduced_;
  const Eigen::VectorXd& w = kernel_weights_;
  const Eigen::VectorXd& parameters = settings_.GetKernelParameter();
  const double weight = sigma2_ > kSmallestVariance ? 0.5 / sigma2_ : 0.0;
  Eigen::MatrixXd slope;  // its lower triangle
  factor.InverseLower(slope);

  Eigen::VectorXd gradient(1 + parameters.size());
  gradient(0) =
      settings_.GetNugget() * std::log(10.0) * (0.5 * slope.trace() - weight * w.squaredNorm());
  Eigen::VectorXd change;
  Eigen::VectorXd sums = Eigen::VectorXd::Zero(parameters.size());
  for (Eigen::Index b = 0; b < x.rows(); ++b) {
    // What lies above the diagonal counts as well: twice what lies below.
    const Eigen::Index below = x.rows() - 1 - b;
    change = correlation.col(b).tail(below).array() *
             (slope.col(b).tail(below) - (2.0 * weight * w(b)) * w.tail(below)).array();
    for (Eigen::Index j = 0; j < x.cols(); ++j)
      sums(parameters.size() == 1 ? 0 : j) +=
          (x.col(j).tail(below).array() - x(b, j)).square().matrix().dot(change);
  }
  // d/dlog10(D) exp(ln(0.001) d^2 / D^2) = exp(...) d^2 2 ln(10) (-ln(0.001)) / D^2.
  const double scale = 2.0 * std::log(10.0) * -std::log(0.001);
  gradient.tail(parameters.size()) = scale * sums.array() / parameters.array().square();
  return gradient;
}

}  // namespace corvath::math::metamodel
