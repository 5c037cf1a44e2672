#include "stochastics/distributions/rv_beta.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm {

namespace {

constexpr double kMinShape = 10.0 * math::kEps;
constexpr double kMaxShape = 1e100;  // beyond, squares overflow; the spread is at its floor by then
constexpr double kMaxSkewness = 1e6;  // beyond, both shapes are below their floor

/// Next to a bound the density is cut off, unless the shape there is this close to 1; then it is
/// flat.
constexpr double kCut = 1e-6;
bool IsFlat(double shape) {
  return std::abs(shape - 1.0) < 1e-6;
}

/// Mean and standard deviation on [0, 1].
double UnitMean(double alpha, double beta) {
  return alpha / (alpha + beta);
}
double UnitSd(double alpha, double beta) {
  const double sum = alpha + beta;
  return std::sqrt(alpha / sum * (beta / sum) / (sum + 1.0));
}

Eigen::Vector4d Moments(double a, double b, double alpha, double beta) {
  const double length = b - a;
  const double sum = alpha + beta;
  const double root = std::sqrt(alpha) * std::sqrt(beta);
  const double difference = (alpha - beta) / root;
  return {UnitMean(alpha, beta) * length + a, UnitSd(alpha, beta) * length,
          -2.0 * difference * std::sqrt(sum + 1.0) / (sum + 2.0),
          6.0 * (difference * difference * (sum + 1.0) / (sum + 2.0) - 1.0) / (sum + 3.0)};
}

}  // namespace

double RV_Beta::GetLowerBound() const {
  return RV_Parameter(0);
}

double RV_Beta::GetUpperBound() const {
  return RV_Parameter(1);
}

double RV_Beta::PDF(double x) const {
  const double a = RV_Parameter(0);
  const double b = RV_Parameter(1);
  if (x < a || x > b) return 0.0;
  const double alpha = RV_Parameter(2);
  const double beta = RV_Parameter(3);
  const double u = (x - a) / (b - a);
  if ((u <= kCut && !IsFlat(alpha)) || (u >= 1.0 - kCut && !IsFlat(beta))) return 0.0;
  const double inside = std::clamp(u, std::numeric_limits<double>::min(), 1.0 - 0.5 * math::kEps);
  double density = math::BetaDensity(alpha, beta, inside);
  if (IsFlat(alpha)) density *= std::pow(inside, 1.0 - alpha);
  if (IsFlat(beta)) density *= std::pow(1.0 - inside, 1.0 - beta);
  return density / (b - a);
}

double RV_Beta::CDF(double x) const {
  const double u = (x - RV_Parameter(0)) / (RV_Parameter(1) - RV_Parameter(0));
  if (u < 0.0) return 0.0;
  return u > 1.0 ? 1.0 : math::IncompleteBeta(RV_Parameter(2), RV_Parameter(3), u);
}

double RV_Beta::InverseCDF(double p) const {
  const double a = RV_Parameter(0);
  const double b = RV_Parameter(1);
  const double u =
      math::IncompleteBetaInverse(RV_Parameter(2), RV_Parameter(3), math::ClampProbability(p));
  return std::clamp(a + (b - a) * u, a, b);  // rounding may lead out of a long interval
}

std::vector<std::wstring> RV_Beta::GetMomentNames() const {
  return {L"Mean value", L"Standard deviation", L"Skewness", L"Excess kurtosis"};
}

std::vector<std::wstring> RV_Beta::GetParameterNames() const {
  return {L"Lower bound a", L"Upper bound b", L"Shape parameter alpha", L"Shape parameter beta"};
}

void RV_Beta::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 4, L": Obtained wrong number of parameters. Expected: 4, obtained: ");
  // Bounds in the wrong order are exchanged, as those of the uniform distribution.
  const auto [a, b] = std::minmax({parameters(0), parameters(1)});
  const double alpha = std::clamp(parameters(2), kMinShape, kMaxShape);
  const double beta = std::clamp(parameters(3), kMinShape, kMaxShape);
  const Eigen::Vector4d moments = Moments(a, b, alpha, beta);
  const double sd = RaiseToFloor(moments(0), moments(1));
  if (moments(1) >= sd)
    Store(Eigen::Vector4d(a, b, alpha, beta), moments);
  else
    TakeStats(moments(0), sd, moments(2), moments(3));
}

void RV_Beta::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 4, L": Wrong number of statistical moments. Expected: 4, obtained: ");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1), moments(2), moments(3));
}

void RV_Beta::TakeStats(double mean, double sd, double skewness, double kurtosis) {
  const double sk = std::clamp(skewness, -kMaxSkewness, kMaxSkewness);
  const double sk2 = sk * sk;
  // The excess kurtosis in terms of its distance from the lower limit sk^2 - 2 of all
  // distributions; the upper limit is the gamma distribution's, 1.5 sk^2. The difference keeps its
  // digits.
  const double distance = std::min(std::max(kurtosis - sk2 + 2.0, 0.001), 0.5 * sk2 + 1.99);
  const double nu = 6.0 * distance / (sk2 + 4.0 - 2.0 * distance);  // alpha + beta
  const double t = (nu + 2.0) * (nu + 2.0) * sk2;
  const double rest = 16.0 * (nu + 1.0);
  const double ratio = std::sqrt(t / (rest + t));  // |alpha - beta| / nu
  const double smaller = 0.5 * nu * (rest / (rest + t)) / (1.0 + ratio);
  const double larger = 0.5 * nu * (1.0 + ratio);
  const bool to_the_right = sk > 0.0;  // the long tail, on the side of the larger shape
  const double alpha = to_the_right ? smaller : larger;
  const double beta = to_the_right ? larger : smaller;

  const double scale = sd / UnitSd(alpha, beta);
  const double a = mean - scale * UnitMean(alpha, beta);
  TakeParameters(a, a + scale, std::max(alpha, kMinShape), std::max(beta, kMinShape));
}

void RV_Beta::TakeParameters(double a, double b, double alpha, double beta) {
  Store(Eigen::Vector4d(a, b, alpha, beta), Moments(a, b, alpha, beta));
}

void RV_Beta::Reset() {
  TakeParameters(0.0, 1.0, 2.0, 2.0);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Beta)
