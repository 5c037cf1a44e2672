#pragma once

#include <Eigen/QR>

#include <cmath>

namespace support {

/// Kriging from the textbook: one dense system by QR, one pair of points at a time.
class PlainKriging {
 public:
  /// @param radii  one, or one for each column of x
  PlainKriging(const Eigen::MatrixXd& x, const Eigen::VectorXd& y, const Eigen::VectorXd& radii,
               double nugget)
      : x_(x), radii_(radii.size() == 1 ? radii.replicate(x.cols(), 1) : radii) {
    Eigen::MatrixXd c(x.rows(), x.rows());
    for (Eigen::Index j = 0; j < x.rows(); ++j) c.col(j) = Correlations(x.row(j));
    c.diagonal().array() += nugget;
    const Eigen::ColPivHouseholderQR<Eigen::MatrixXd> qr(c);
    const Eigen::VectorXd ones = Eigen::VectorXd::Ones(x.rows());
    information = ones.dot(qr.solve(ones));
    mean = ones.dot(qr.solve(y)) / information;
    const Eigen::VectorXd centred = y.array() - mean;
    weights_ = qr.solve(centred);
    const auto n = static_cast<double>(x.rows());
    sigma2 = centred.dot(weights_) / n;
    log_determinant = qr.logAbsDeterminant();
    likelihood = 0.5 * (n * std::log(sigma2) + log_determinant);
  }

  double Predict(const Eigen::RowVectorXd& x) const { return mean + Correlations(x).dot(weights_); }

  double mean, sigma2, log_determinant, information;
  double likelihood;  ///< negative logarithm, without the constant

 private:
  Eigen::VectorXd Correlations(const Eigen::RowVectorXd& x) const {
    const Eigen::MatrixXd scaled = (x_.rowwise() - x) * radii_.cwiseInverse().asDiagonal();
    return scaled.rowwise().squaredNorm().unaryExpr([](double r) { return std::pow(0.001, r); });
  }

  Eigen::MatrixXd x_;
  Eigen::VectorXd radii_, weights_;
};

}  // namespace support
