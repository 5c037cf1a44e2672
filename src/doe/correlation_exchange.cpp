#include "doe/correlation_exchange.h"

#include "stochastics/sample_statistics.h"

#include <cmath>
#include <utility>

namespace corvath::math {
namespace {

using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

constexpr int kMaxPasses = 500;
constexpr int kTries = 500;
constexpr int kMaxVisits = 10;  ///< of a column without any exchange in between
constexpr double kEqual = 1e-10;

class CorrelationExchange {
 public:
  CorrelationExchange(Engine engine, MatrixXd points, Index fixed)
      : engine_(engine), x_(std::move(points)), fixed_(fixed) {
    const VectorXd mean = statistics::MeanVector(x_);
    const VectorXd sigma = statistics::SigmaVector(x_, mean);
    z_ = x_.rowwise() - mean.transpose();
    for (Index k = 0; k < x_.cols(); ++k) {
      if (sigma(k) > 0.0)
        z_.col(k) /= sigma(k);
      else
        z_.col(k).setZero();
    }
    r_ = statistics::CorrelationMatrix(z_);
    for (Index k = 0; k < x_.cols(); ++k) {
      if (sigma(k) > 0.0) continue;
      r_.row(k).setZero();  // the correlations of a constant have no meaning
      r_.col(k).setZero();
    }
    r_.diagonal().setZero();
    visits_ = Eigen::VectorXi::Zero(x_.cols());
    error_ = r_.squaredNorm() / static_cast<double>(x_.cols() * x_.cols());
  }

  MatrixXd Run(double tolerance) {
    for (int pass = 0; pass < kMaxPasses && 10.0 * error_ > tolerance * tolerance; ++pass) {
      const Index k = NextColumn();
      ++visits_(k);
      for (int i = 0; i < kTries; ++i) {
        const Index a = DrawInteger(engine_, fixed_, x_.rows() - 1);
        const Index b = DrawInteger(engine_, fixed_, x_.rows() - 1);
        if (a != b && std::abs(z_(a, k) - z_(b, k)) >= kEqual) Try(k, a, b);
      }
    }
    return std::move(x_);
  }

 private:
  Index NextColumn() {
    if (visits_.minCoeff() >= kMaxVisits) return DrawInteger(engine_, 0, x_.cols() - 1);
    Index column = 0;
    VectorXd measure = r_.colwise().squaredNorm();
    for (Index k = 0; k < measure.size(); ++k)
      if (visits_(k) >= kMaxVisits) measure(k) = 0.0;
    measure.maxCoeff(&column);  // the first on ties
    return column;
  }

  void Try(Index k, Index a, Index b) {
    // sum_i z_ij z_ik changes by (z_aj - z_bj) (z_bk - z_ak).
    const double step = (z_(b, k) - z_(a, k)) / static_cast<double>(x_.rows() - 1);
    changed_ = r_.col(k).transpose() + (z_.row(a) - z_.row(b)) * step;
    changed_(k) = 0.0;
    const double gain = 2.0 * (r_.col(k).squaredNorm() - changed_.squaredNorm()) /
                        static_cast<double>(x_.cols() * x_.cols());
    if (!(gain > 0.0)) return;
    std::swap(z_(a, k), z_(b, k));
    // The points take the exchange themselves: scaling back would round the numbers of states.
    std::swap(x_(a, k), x_(b, k));
    r_.col(k) = changed_.transpose();
    r_.row(k) = changed_;
    error_ -= gain;
    visits_.setZero();
  }

  Engine engine_;
  MatrixXd x_;
  Index fixed_;
  MatrixXd z_;              ///< x_ standardised; 0 in constant columns
  MatrixXd r_;              ///< correlations, the diagonal 0
  Eigen::VectorXi visits_;  ///< of each column since the last exchange
  double error_ = 0.0;      ///< mean square of r_
  Eigen::RowVectorXd changed_;
};

}  // namespace

MatrixXd LowerCorrelations(Engine engine, MatrixXd points, Index fixed, double tolerance) {
  return CorrelationExchange(engine, std::move(points), fixed).Run(tolerance);
}

}  // namespace corvath::math
