#include "metamodel/kriging/kernel_noise_fit.h"

#include "foundation/constants.h"
#include "metamodel/kernels/kernel.h"
#include "metamodel/kriging/definite_factor.h"
#include "optimizer/nlpqlp_interface.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace corvath::math::metamodel {

namespace {

using math::kInfinity;
/// Natural logarithms of the bounds.
const double kLowestRadius = std::log(0.1);
const double kHighestRadius = std::log(300.0);
const double kLowestNugget = std::log(1e-8);
const double kHighestNugget = std::log(1e4);
/// Of the prior of the logarithms of length scales l with exp(-d^2 / (2 l^2)): variance of what they
/// have in common, and squared scale and degrees of freedom of a Student's t distribution of each
/// about that. Lengths that few data determine are shared, nearly; an input that does not matter, or
/// more than others, still gets its own. On some 60 public tables of 13 to 110 rows, 0.1 to 0.5 and
/// three degrees to a normal distribution do much the same; with 100 designs of smooth functions the
/// heavy tails tell what matters.
constexpr double kCommonVariance = 3.0;
constexpr double kOwnScale = 0.1;
constexpr double kFreedom = 3.0;
/// Standard deviations of an input that count as its range, and the least deviation: an input that
/// is nearly always the same must not become steep.
constexpr double kDeviationsOfRange = 3.0;
constexpr double kLeastDeviation = 0.05;
/// Rows up to which both starts are followed; above, the better one.
constexpr Eigen::Index kFewRows = 150;

/// The objective and its gradient by the logarithms of the nugget (entry 0) and the radii.
class RestrictedLikelihood {
 public:
  RestrictedLikelihood(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                       bool is_anisotropic)
      : points_(points),
        values_(values.array() - values.mean()),
        num_radii_(is_anisotropic ? points.cols() : 1) {
    // A radius D weighs 0.001 at the distance D: D^2 = -2 ln(0.001) l^2.
    const double of_scale = std::sqrt(-2.0 * std::log(0.001));
    const double typical =
        std::sqrt(2.0) + 0.5 * std::log(static_cast<double>(points.cols())) + std::log(of_scale);
    const Eigen::ArrayXd deviations =
        ((points.rowwise() - points.colwise().mean()).colwise().squaredNorm() /
         static_cast<double>(points.rows()))
            .array()
            .sqrt();
    const Eigen::VectorXd ranges =
        (kDeviationsOfRange * deviations.max(kLeastDeviation)).log().matrix();
    prior_means_ = num_radii_ > 1 ? Eigen::VectorXd(ranges.array() + typical)
                                  : Eigen::VectorXd::Constant(1, typical + ranges.mean());
  }

  Eigen::Index GetNumber() const { return 1 + num_radii_; }
  const Eigen::VectorXd& GetPriorMeans() const { return prior_means_; }

  /// Infinity where the correlation matrix is not positive definite.
  double Evaluate(const Eigen::VectorXd& x, Eigen::VectorXd* gradient) {
    const Eigen::Index n = points_.rows();
    const double influence = -std::log(0.001);
    theta_.resize(points_.cols());
    for (Eigen::Index j = 0; j < theta_.size(); ++j)
      theta_(j) = influence * std::exp(-2.0 * x(1 + (num_radii_ > 1 ? j : 0)));
    // Squared distances by a product: the points lie in [0, 1], so cancellation costs 1e-16 of r.
    scaled_ = points_ * theta_.cwiseSqrt().asDiagonal();
    const Eigen::VectorXd norms = scaled_.rowwise().squaredNorm();
    kernel_.noalias() = 2.0 * scaled_ * scaled_.transpose();
    kernel_.colwise() -= norms;
    kernel_.rowwise() -= norms.transpose();
    kernel_ = kernel_.cwiseMin(0.0);
    ExpInPlace(kernel_.reshaped());
    const double nugget = std::exp(x(0));
    kernel_.diagonal().setConstant(1.0 + nugget);
    if (!factor_.Compute(kernel_)) return kInfinity;
    const double log_determinant = factor_.LogDeterminant();
    const Eigen::VectorXd of_ones = factor_.Solve(Eigen::VectorXd::Ones(n));
    const Eigen::VectorXd of_values = factor_.Solve(values_);
    const double information = of_ones.sum();
    const Eigen::VectorXd weights = of_values - (of_values.sum() / information) * of_ones;
    const double freedom = static_cast<double>(n - 1);
    const double variance = std::max(values_.dot(weights) / freedom, 1e-300);
    double objective =
        0.5 * (freedom * std::log(variance) + log_determinant + std::log(information));
    const Eigen::ArrayXd own = x.tail(num_radii_) - prior_means_;
    const double common = CommonOf(own);
    const Eigen::ArrayXd squares = (own - common).square() / (kFreedom * kOwnScale);
    objective +=
        0.5 * (kFreedom + 1.0) * squares.log1p().sum() + 0.5 * common * common / kCommonVariance;
    if (!std::isfinite(objective)) return kInfinity;
    if (!gradient) return objective;

    // d/dp = 1/2 sum over ab of G_ab dC_ab with G = C^-1 - w w' / s^2 - a a' / 1'a.
    factor_.InverseLower(inverse_);
    inverse_.triangularView<Eigen::StrictlyUpper>() = inverse_.transpose();
    inverse_.noalias() -= weights * (weights.transpose() / variance);
    inverse_.noalias() -= of_ones * (of_ones.transpose() / information);
    gradient->resize(x.size());
    (*gradient)(0) = 0.5 * nugget * inverse_.trace();
    kernel_.diagonal().setZero();
    inverse_.array() *= kernel_.array();
    const Eigen::VectorXd sums = inverse_.rowwise().sum();
    const Eigen::MatrixXd product = inverse_ * points_;
    gradient->tail(num_radii_).setZero();
    for (Eigen::Index j = 0; j < points_.cols(); ++j) {
      // sum of H_ab (x_a - x_b)^2
      const double sum =
          2.0 * (sums.dot(points_.col(j).cwiseAbs2()) - points_.col(j).dot(product.col(j)));
      (*gradient)(1 + (num_radii_ > 1 ? j : 0)) += theta_(j) * sum;
    }
    gradient->tail(num_radii_).array() +=
        (kFreedom + 1.0) * (own - common) / (kFreedom * kOwnScale * (1.0 + squares));
    return objective;
  }

 private:
  /// The most likely part that logarithms of lengths have in common, by repeated weighting. The
  /// objective is stationary in it, so that gradients need no derivative of it.
  static double CommonOf(const Eigen::ArrayXd& own) {
    double common = own.mean();
    for (int step = 0; step < 50; ++step) {
      const Eigen::ArrayXd weights =
          (kFreedom + 1.0) / (kFreedom * kOwnScale + (own - common).square());
      const double next = (weights * own).sum() / (weights.sum() + 1.0 / kCommonVariance);
      const bool is_same = std::abs(next - common) < 1e-12;
      common = next;
      if (is_same) break;
    }
    return common;
  }

  const Eigen::MatrixXd& points_;
  Eigen::VectorXd values_;
  Eigen::Index num_radii_;
  Eigen::VectorXd prior_means_;
  Eigen::VectorXd theta_;
  Eigen::MatrixXd scaled_;
  Eigen::MatrixXd kernel_;
  Eigen::MatrixXd inverse_;
  DefiniteFactor factor_;
};

struct Trial {
  Eigen::VectorXd x;
  double objective;
};

/// Quasi-Newton within bounds from `start`; the best point that it meets.
Trial Descend(RestrictedLikelihood& likelihood, const Trial& start, const Eigen::VectorXd& lower,
              const Eigen::VectorXd& upper, const std::function<void()>& interruption_point) {
  const Eigen::Index d = start.x.size();
  algorithm::optimizer::NLPQLPInterface core(static_cast<std::int32_t>(d), 0, 0, 1);
  core.ACC = 1e-4;
  core.MAXFUN = 15;
  core.MAXIT = 40;
  core.SetLowerBounds(lower);
  core.SetUpperBounds(upper);
  core.X.col(0).head(d) = start.x;
  Trial best = start;
  Eigen::VectorXd gradient = Eigen::VectorXd::Zero(d);
  do {
    if (interruption_point) interruption_point();
    const Eigen::VectorXd x = core.GetColumn(core.X, 0);
    const bool wants_value = core.IFAIL == -1;
    const double objective = likelihood.Evaluate(x, wants_value ? nullptr : &gradient);
    if (!std::isfinite(objective) && !wants_value) return best;
    if (objective < best.objective) best = {x, objective};
    core.F(0) = std::isfinite(objective) ? objective : 1e10;  // a wall for the line search
    if (!wants_value) core.DF.head(d) = gradient;
    core.Step();
  } while (core.IFAIL == -1 || core.IFAIL == -2);
  return best;
}

}  // namespace

KernelWithNoise FitKernelWithNoise(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                   bool is_anisotropic,
                                   const std::function<void()>& interruption_point) {
  RestrictedLikelihood likelihood(points, values, is_anisotropic);
  const Eigen::Index d = likelihood.GetNumber();
  Eigen::VectorXd lower = Eigen::VectorXd::Constant(d, kLowestRadius);
  Eigen::VectorXd upper = Eigen::VectorXd::Constant(d, kHighestRadius);
  lower(0) = kLowestNugget;
  upper(0) = kHighestNugget;
  std::vector<Trial> starts;
  const double rough = std::log(2.0) + 0.5 * std::log(static_cast<double>(points.cols()));
  const Eigen::VectorXd smooth_radii = likelihood.GetPriorMeans();
  const Eigen::VectorXd rough_radii = Eigen::VectorXd::Constant(d - 1, rough);
  for (const auto& [radii, nugget] :
       {std::pair{smooth_radii, 1e-2}, std::pair{rough_radii, 1e-1}}) {
    Eigen::VectorXd x(d);
    x << std::log(nugget), radii;
    x = x.cwiseMax(lower).cwiseMin(upper);
    starts.push_back({x, likelihood.Evaluate(x, nullptr)});
  }
  if (starts[1].objective < starts[0].objective) std::swap(starts[0], starts[1]);
  if (points.rows() > kFewRows) starts.resize(1);
  Trial best = starts[0];
  for (const Trial& start : starts) {
    if (!std::isfinite(start.objective)) continue;
    const Trial end = Descend(likelihood, start, lower, upper, interruption_point);
    if (end.objective < best.objective) best = end;
  }
  return {best.x.tail(d - 1).array().exp(), std::exp(best.x(0)), best.objective};
}

}  // namespace corvath::math::metamodel
