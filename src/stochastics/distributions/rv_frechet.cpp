#include "stochastics/distributions/rv_frechet.h"

#include "foundation/closeness.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm {

namespace {

constexpr double kMinShape = 2.0 + 100.0 * math::kEps;  // at 2 the variance becomes infinite

/// ln(1 + coefficient of variation^2) for u = 1 / alpha: ln G(1 - 2u) - 2 ln G(1 - u), which depends
/// on u alone and rises in it.
double LogVariation(double u) {
  return math::LogGamma1p(-2.0 * u) - 2.0 * math::LogGamma1p(-u);
}

double MeanOfUnitScale(double u) {
  return std::exp(math::LogGamma1p(-u));
}

}  // namespace

double RV_Frechet::GetLowerBound() const {
  return std::numeric_limits<double>::min();
}

double RV_Frechet::PDF(double x) const {
  if (x <= 0.0) return 0.0;
  const double alpha = RV_Parameter(1);
  const double ratio = x / RV_Parameter(0);
  const double power = std::pow(ratio, -alpha);
  return std::isinf(power) ? 0.0 : std::exp(-power) * power / ratio * alpha / RV_Parameter(0);
}

double RV_Frechet::CDF(double x) const {
  return x <= 0.0 ? 0.0 : std::exp(-std::pow(x / RV_Parameter(0), -RV_Parameter(1)));
}

double RV_Frechet::InverseCDF(double p) const {
  return RV_Parameter(0) * std::pow(-std::log(math::ClampProbability(p)), -1.0 / RV_Parameter(1));
}

std::vector<std::wstring> RV_Frechet::GetParameterNames() const {
  return {L"Scale parameter s", L"Shape parameter alpha"};
}

void RV_Frechet::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Obtained wrong number of parameters. Expected: 2, obtained: ");
  const double s = std::max(parameters(0), math::kEps);
  const double alpha = std::max(parameters(1), kMinShape);
  const double mean = s * MeanOfUnitScale(1.0 / alpha);
  const double sd = mean * std::sqrt(std::expm1(LogVariation(1.0 / alpha)));
  const double allowed_mean = std::max(mean, math::kEps);
  const double allowed_sd = RaiseToFloor(allowed_mean, sd);
  if (allowed_mean != mean || allowed_sd != sd)
    TakeStats(allowed_mean, allowed_sd);
  else
    Store({s, alpha}, {mean, sd});
}

void RV_Frechet::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  if (moments(0) < math::kEps) Raise(L": Mean value must be strictly positive.");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1));
}

// Bisection of (0, 1/2). Coefficients of variation above that of the smallest shape, about 1e7,
// cannot be had; the moments are then those of that shape.
void RV_Frechet::TakeStats(double mean, double sd) {
  const double target = std::log1p((sd / mean) * (sd / mean));
  double u = 0.25;
  constexpr double kWidth = 1e-16;  // of u, relative: all that a double can hold
  for (double h = 0.125; h > kWidth * u; h *= 0.5) u += LogVariation(u) > target ? -h : h;
  if (u > 1.0 / kMinShape) {
    u = 1.0 / kMinShape;
    sd = mean * std::sqrt(std::expm1(LogVariation(u)));
  }
  Store({mean / MeanOfUnitScale(u), 1.0 / u}, {mean, sd});
}

void RV_Frechet::Reset() {
  TakeStats(1.0, 1.0);
}

}  // namespace corvath::algorithm
