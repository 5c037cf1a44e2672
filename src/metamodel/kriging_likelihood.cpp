#include "metamodel/factories.h"
#include "metamodel/inverse_root.h"
#include "metamodel/kernel_block.h"
#include "metamodel/ordinary_kriging.h"

#include <Eigen/Cholesky>

#include <cmath>
#include <stdexcept>

// Correlation matrix, generalised least squares and likelihood of a kriging model.

namespace corvath::math::metamodel {

namespace {

/// A constant response has no variance; its logarithm is taken here.
constexpr double kSmallestVariance = 1e-50;

/// Columns of the correlation matrix that are formed at once.
constexpr Eigen::Index kBlockColumns = 64;

void Mirror(Eigen::MatrixXd& matrix) {
  matrix.triangularView<Eigen::StrictlyLower>() = matrix.transpose();
}

}  // namespace

Eigen::MatrixXd OrdinaryKriging::BuildCorrelation(const Eigen::MatrixXd& points) const {
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  const Eigen::Index n = points.rows();
  Eigen::MatrixXd correlation(n, n);
  if (kernel->IsConstantInfluence()) {
    const KernelBlock block(*kernel, points);
    for (Eigen::Index begin = 0; begin < n; begin += kBlockColumns) {
      const Eigen::Index columns = std::min(kBlockColumns, n - begin);
      block.Weights(points.middleRows(begin, columns),
                    correlation.block(0, begin, begin + columns, columns));
    }
  } else {
    // A nodal radius follows the points that it is given: here the one point of the pair.
    Eigen::VectorXd weight(1);
    for (Eigen::Index j = 0; j < n; ++j)
      for (Eigen::Index i = 0; i < j; ++i) {
        kernel->Weights(weight, points.row(i).transpose(), points.row(j));
        correlation(i, j) = weight(0);
      }
  }
  Mirror(correlation);
  correlation.diagonal().setConstant(settings_.GetNugget() + 1.0);
  return correlation;
}

Eigen::MatrixXd OrdinaryKriging::BuildCorrelationOfDistances(const Eigen::MatrixXd& squared) const {
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  Eigen::MatrixXd correlation(squared.rows(), squared.cols());
  for (Eigen::Index j = 0; j < squared.cols(); ++j)
    correlation.col(j).head(j) = kernel->EvaluateDistances(squared.col(j).head(j));
  Mirror(correlation);
  correlation.diagonal().setConstant(settings_.GetNugget() + 1.0);
  return correlation;
}

bool OrdinaryKriging::Solve(const Eigen::VectorXd& y, const Eigen::MatrixXd& correlation) {
  residuals_.resize(0);
  const Eigen::LDLT<Eigen::MatrixXd> ldlt(correlation);
  const Eigen::VectorXd pivots = ldlt.vectorD();
  if (!(pivots.array() > 0.0).all()) return false;  // this way round, NaN is refused too
  const auto n = static_cast<double>(y.size());
  const Eigen::VectorXd b = ldlt.solve(y);
  const Eigen::VectorXd a = ldlt.solve(Eigen::VectorXd::Ones(y.size()));
  mean_ = b.sum() / a.sum();
  kernel_weights_ = b - mean_ * a;
  sigma2_ = y.dot(kernel_weights_) / n;
  const double variance = sigma2_ > kSmallestVariance ? sigma2_ : kSmallestVariance;
  likelihood_ = 0.5 * (n * std::log(variance) + pivots.array().log().sum());
  need_build_ = false;
  return true;
}

Eigen::VectorXd OrdinaryKriging::LikelihoodGradient() {
  if (!Build()) throw std::logic_error("Kriging: the likelihood needs a model that can be built");
  RequireConsistent();
  const Eigen::MatrixXd& x = points_trans_reduced_;
  const Eigen::VectorXd& w = kernel_weights_;
  const Eigen::VectorXd& parameters = settings_.GetKernelParameter();
  const Eigen::MatrixXd correlation = BuildCorrelation(x);
  Eigen::MatrixXd root;
  if (!InverseRoot(correlation, root))
    throw std::logic_error("rebuild of correlation matrix failed");
  // With C^-1 (y - mu 1) = w the derivative for dC is tr(C^-1 dC) / 2 - w' dC w / (2 sigma^2): the
  // sum over dC times this matrix. Below the floor of the variance its second term does not count.
  Eigen::MatrixXd slope = 0.5 * (root.transpose() * root);
  if (sigma2_ > kSmallestVariance) slope -= w * (w.transpose() * (0.5 / sigma2_));

  Eigen::VectorXd gradient(1 + parameters.size());
  gradient(0) = settings_.GetNugget() * std::log(10.0) * slope.trace();
  slope.array() *= correlation.array();
  // d/dlog10(D) exp(ln(0.001) d^2 / D^2) = exp(...) d^2 2 ln(10) (-ln(0.001)) / D^2.
  const double scale = 2.0 * std::log(10.0) * -std::log(0.001);
  Eigen::VectorXd squared(x.rows());
  Eigen::VectorXd sums = Eigen::VectorXd::Zero(parameters.size());
  for (Eigen::Index b = 0; b < x.rows(); ++b)
    for (Eigen::Index j = 0; j < x.cols(); ++j) {
      squared = (x.col(j).array() - x(b, j)).square();
      sums(parameters.size() == 1 ? 0 : j) += squared.dot(slope.col(b));
    }
  gradient.tail(parameters.size()) = scale * sums.array() / parameters.array().square();
  return gradient;
}

}  // namespace corvath::math::metamodel
