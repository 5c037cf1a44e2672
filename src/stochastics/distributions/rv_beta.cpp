#include "stochastics/distributions/rv_beta.h"

#include "foundation/closeness.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

constexpr double kMinShape = 10.0 * math::kEps;
constexpr double kMaxShape = 1e100;  // beyond, squares overflow; the spread is at its floor by then
constexpr double kMaxSkewness = 1e6;  // beyond, both shapes are below their floor

/// One factor of the density, distance^(shape - 1): flat at shape 1, cut off next to the bound.
double Factor(double distance, double shape) {
  if (std::abs(shape - 1.0) < 1e-6) return 1.0;
  return distance > 1e-6 ? std::pow(distance, shape - 1.0) : 0.0;
}

/// Mean and standard deviation on [0, 1].
double UnitMean(double alpha, double beta) {
  return alpha / (alpha + beta);
}
double UnitSd(double alpha, double beta) {
  const double sum = alpha + beta;
  return std::sqrt(alpha / sum * (beta / sum) / (sum + 1.0));
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
  return Factor(u, alpha) * Factor(1.0 - u, beta) / math::Beta(alpha, beta) / (b - a);
}

double RV_Beta::CDF(double x) const {
  const double u = (x - RV_Parameter(0)) / (RV_Parameter(1) - RV_Parameter(0));
  if (u < 0.0) return 0.0;
  return u > 1.0 ? 1.0 : math::IncompleteBeta(RV_Parameter(2), RV_Parameter(3), u);
}

double RV_Beta::InverseCDF(double p) const {
  return RV_Parameter(0) + (RV_Parameter(1) - RV_Parameter(0)) *
                               math::IncompleteBetaInverse(RV_Parameter(2), RV_Parameter(3),
                                                           math::ClampProbability(p));
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
  RV_Parameter = Eigen::Vector4d(a, b, std::clamp(parameters(2), kMinShape, kMaxShape),
                                 std::clamp(parameters(3), kMinShape, kMaxShape));
  UpdateMoments();
  const Eigen::Vector4d moments = RV_Statistical_Moments;
  const double sd = RaiseToFloor(moments(0), moments(1));
  if (!(moments(1) >= sd)) TakeStats(moments(0), sd, moments(2), moments(3));
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
  RV_Parameter =
      Eigen::Vector4d(a, a + scale, std::max(alpha, kMinShape), std::max(beta, kMinShape));
  UpdateMoments();
}

void RV_Beta::UpdateMoments() {
  const double length = RV_Parameter(1) - RV_Parameter(0);
  const double alpha = RV_Parameter(2);
  const double beta = RV_Parameter(3);
  const double sum = alpha + beta;
  const double root = std::sqrt(alpha) * std::sqrt(beta);
  const double difference = (alpha - beta) / root;
  RV_Statistical_Moments = Eigen::Vector4d(
      UnitMean(alpha, beta) * length + RV_Parameter(0), UnitSd(alpha, beta) * length,
      -2.0 * difference * std::sqrt(sum + 1.0) / (sum + 2.0),
      6.0 * (difference * difference * (sum + 1.0) / (sum + 2.0) - 1.0) / (sum + 3.0));
}

void RV_Beta::Reset() {
  RV_Parameter = Eigen::Vector4d(0.0, 1.0, 2.0, 2.0);
  UpdateMoments();
}

}  // namespace corvath::algorithm
