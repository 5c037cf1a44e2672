#include "stochastics/distributions/rv_truncated_normal.h"

#include "foundation/closeness.h"
#include "foundation/constants.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/distributions/rv_uniform.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

/// Probability between two standard normal values, taken in the tail where it does not cancel.
double Mass(double alpha, double beta) {
  return alpha > 0.0 ? math::NormalCdf(-alpha) - math::NormalCdf(-beta)
                     : math::NormalCdf(beta) - math::NormalCdf(alpha);
}

/// z times the standard normal density, 0 at infinity.
double Moment(double z) {
  return std::isinf(z) ? 0.0 : z * math::NormalPdf(z);
}

struct MeanAndSd {
  double mean;
  double sd;
};

/// Of the standard normal distribution cut to [alpha, beta].
MeanAndSd CutStandardNormal(double alpha, double beta) {
  const double area = 1.0 / Mass(alpha, beta);
  const double d = (math::NormalPdf(alpha) - math::NormalPdf(beta)) * area;
  return {d, std::sqrt(1.0 + (Moment(alpha) - Moment(beta)) * area - d * d)};
}

/// Of a normal distribution cut to [a, b].
MeanAndSd CutNormal(double mu, double s, double a, double b) {
  const auto [mean, sd] = CutStandardNormal((a - mu) / s, (b - mu) / s);
  return {mean * s + mu, sd * s};
}

/// Location and scale on [a, b] for the mean 0 and the standard deviation 1: a damped Newton search
/// from (0, 1) with central differences. Where it does not settle (a one-sided interval cannot have
/// a standard deviation above its mean's distance from the bound), its best iterate.
Eigen::Vector2d FitStandardised(double a, double b) {
  constexpr int kMaxIterations = 100;
  constexpr double kTolerance = 1e-12;
  constexpr double kStep = 1e-5;
  constexpr double kMinScale = 1e-12;
  const auto residual = [a, b](const Eigen::Vector2d& x) {
    const auto [mean, sd] = CutNormal(x(0), x(1), a, b);
    return Eigen::Vector2d(mean, sd - 1.0);
  };
  Eigen::Vector2d best(0.0, 1.0);
  Eigen::Vector2d step = Eigen::Vector2d::Zero();
  double best_norm = 1e16;
  double damping = 1.0;
  for (int i = 0; i < kMaxIterations; ++i) {
    const Eigen::Vector2d trial = best + damping * step;
    const Eigen::Vector2d error = residual(trial);
    const bool off =
        trial(1) < kMinScale || trial(0) + 6.0 * trial(1) < a || trial(0) - 6.0 * trial(1) > b;
    if (off || !(error.norm() < best_norm)) {  // NaN as well
      damping *= 0.5;
      continue;
    }
    best = trial;
    best_norm = error.norm();
    if (best_norm < kTolerance) break;
    Eigen::Matrix2d jacobian;
    for (int k = 0; k < 2; ++k) {
      const Eigen::Vector2d h = kStep * Eigen::Vector2d::Unit(k);
      jacobian.col(k) = (residual(best + h) - residual(best - h)) / (2.0 * kStep);
    }
    step = -(jacobian.inverse() * error);
    if (step.norm() > 1.0) step.normalize();
  }
  return best;
}

}  // namespace

double RV_Truncatednormal::GetLowerBound() const {
  return RV_Parameter(2);
}

double RV_Truncatednormal::GetUpperBound() const {
  return RV_Parameter(3);
}

double RV_Truncatednormal::PDF(double x) const {
  if (x < RV_Parameter(2) || x > RV_Parameter(3)) return 0.0;
  return RV_Gauss.PDF(x) * RV_area;
}

double RV_Truncatednormal::CDF(double x) const {
  const double a = RV_Parameter(2);
  if (x <= a) return 0.0;
  if (x >= RV_Parameter(3)) return 1.0;
  const double mu = RV_Parameter(0);
  const double s = RV_Parameter(1);
  return std::min(Mass((a - mu) / s, (x - mu) / s) * RV_area, 1.0);
}

double RV_Truncatednormal::InverseCDF(double p) const {
  const double a = RV_Parameter(2);
  const double b = RV_Parameter(3);
  if (p <= 0.0) return a;
  if (p >= 1.0) return b;
  const double mu = RV_Parameter(0);
  const double s = RV_Parameter(1);
  const double alpha = (a - mu) / s;
  // The probability from the side whose tail does not cancel. No clamp: the result is bounded.
  const double z =
      alpha > 0.0
          ? math::kSqrtTwo * math::ErfcInverse(2.0 * (math::NormalCdf(-alpha) - p / RV_area))
          : -math::kSqrtTwo * math::ErfcInverse(2.0 * (math::NormalCdf(alpha) + p / RV_area));
  return std::clamp(mu + s * z, a, b);
}

std::vector<std::wstring> RV_Truncatednormal::GetMomentNames() const {
  return {L"Mean value", L"Standard deviation", L"Lower bound", L"Upper bound"};
}

std::vector<std::wstring> RV_Truncatednormal::GetParameterNames() const {
  return {L"Location parameter mu", L"Scale parameter s", L"Lower bound a", L"Upper bound b"};
}

void RV_Truncatednormal::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 4, L": Wrong number of statistical parameters. Expected: 4, obtained: ");
  const double mu = parameters(0);
  const double s = RaiseToFloor(mu, std::max(parameters(1), 10.0 * math::kEps));
  auto [a, b] = std::minmax({parameters(2), parameters(3)});
  a = std::min(std::max(a, mu - 10.0 * s), mu + 3.0 * s);
  b = std::min(std::max(b, mu - 3.0 * s), mu + 10.0 * s);
  if (s > b - a) b = a + s;
  TakeParameters(mu, s, a, b);
}

void RV_Truncatednormal::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 4, L": Wrong number of statistical moments. Expected: 4, obtained: ");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1), moments(2), moments(3));
}

void RV_Truncatednormal::TakeStats(double mean, double sd, double first, double second) {
  const auto [lower, upper] = std::minmax({first, second});
  // Distances from the mean in standard deviations, at most this many: the same in double precision.
  constexpr double kFar = 1e10;
  double a = std::max((std::min(lower, mean - sd) - mean) / sd, -kFar);
  double b = std::min((std::max(upper, mean + sd) - mean) / sd, kFar);
  if (b - a < kUniformLength) {  // too short for the standard deviation, even of a uniform variable
    const double factor = kUniformLength * 1.001 / (b - a);
    a *= factor;
    b *= factor;
  }
  const Eigen::Vector2d x = FitStandardised(a, b);
  TakeParameters(x(0) * sd + mean, x(1) * sd, a * sd + mean, b * sd + mean);
  IsReached(Eigen::Vector2d(mean, sd), RV_Statistical_Moments.head<2>());
}

void RV_Truncatednormal::TakeParameters(double mu, double s, double a, double b) {
  const auto [mean, sd] = CutNormal(mu, s, a, b);
  Store({mu, s, a, b}, {mean, sd, a, b});
  RV_Gauss.SetExact(mu, s);
  RV_area = 1.0 / Mass((a - mu) / s, (b - mu) / s);
}

void RV_Truncatednormal::Reset() {
  TakeParameters(0.0, 1.0, -10.0, 10.0);
}

template <class Archive>
void RV_Truncatednormal::SerializeFurther(Archive& ar) {
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
  ar& BOOST_SERIALIZATION_NVP(RV_area);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Truncatednormal)
