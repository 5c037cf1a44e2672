#include "stochastics/distributions/rv_frechet.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"
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

/// Mean and standard deviation.
Eigen::Vector2d Moments(double s, double u) {
  const double mean = s * MeanOfUnitScale(u);
  return {mean, mean * std::sqrt(std::expm1(LogVariation(u)))};
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
  const Eigen::Vector2d moments = Moments(s, 1.0 / alpha);
  const double mean = moments(0);
  const double sd = moments(1);
  const double allowed_mean = std::max(mean, math::kEps);
  const double allowed_sd = RaiseToFloor(allowed_mean, sd);
  if (allowed_mean != mean || allowed_sd != sd)
    TakeStats(allowed_mean, allowed_sd);
  else
    Store(Eigen::Vector2d(s, alpha), moments);
}

void RV_Frechet::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  if (moments(0) < math::kEps) Raise(L": Mean value must be strictly positive.");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1));
}

// Bisection of (0, 1/2) for u = 1 / alpha, down to 1e-10. The width is contract: variables of equal
// moments have equal parameters wherever they were made. Of a coefficient of variation of 1e-6 it
// leaves four digits, and one above 4e4 is not reached.
void RV_Frechet::TakeStats(double mean, double sd) {
  constexpr double kWidth = 1e-10;
  const double target = std::log1p((sd / mean) * (sd / mean));
  double u = 0.25;
  for (double h = 0.125; h >= kWidth; h *= 0.5) u += LogVariation(u) > target ? -h : h;
  const Eigen::Vector2d parameters(mean / MeanOfUnitScale(u), 1.0 / u);
  const Eigen::Vector2d asked(mean, sd);
  const Eigen::Vector2d found = Moments(parameters(0), u);
  Store(parameters, IsReached(asked, found) ? asked : found);
}

void RV_Frechet::Reset() {
  TakeStats(1.0, 1.0);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Frechet)
