#include "stochastics/distributions/rv_weibull.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm {

namespace {

constexpr double kMinShape = 0.02;
constexpr double kMaxCoefficientOfVariation = 1e15;

/// ln(1 + coefficient of variation^2) of the shape k: ln G(1 + 2/k) - 2 ln G(1 + 1/k), which decides
/// alone and falls in k.
double LogVariation(double k) {
  return math::LogGamma1p(2.0 / k) - 2.0 * math::LogGamma1p(1.0 / k);
}

double MeanOfUnitScale(double k) {
  return std::exp(math::LogGamma1p(1.0 / k));
}

/// Mean and standard deviation.
Eigen::Vector2d Moments(double lambda, double k) {
  const double mean = lambda * MeanOfUnitScale(k);
  return {mean, mean * std::sqrt(std::expm1(LogVariation(k)))};
}

}  // namespace

double RV_Weibull::GetLowerBound() const {
  return std::numeric_limits<double>::min();
}

double RV_Weibull::PDF(double x) const {
  if (x <= 0.0) return 0.0;
  const double k = RV_Parameter(1);
  const double ratio = x / RV_Parameter(0);
  const double power = std::pow(ratio, k);
  return std::isinf(power) ? 0.0 : std::exp(-power) * power / ratio * k / RV_Parameter(0);
}

double RV_Weibull::CDF(double x) const {
  return x <= 0.0 ? 0.0 : -std::expm1(-std::pow(x / RV_Parameter(0), RV_Parameter(1)));
}

double RV_Weibull::InverseCDF(double p) const {
  return RV_Parameter(0) * std::pow(-std::log1p(-math::ClampProbability(p)), 1.0 / RV_Parameter(1));
}

std::vector<std::wstring> RV_Weibull::GetParameterNames() const {
  return {L"Scale parameter lambda", L"Shape parameter k"};
}

void RV_Weibull::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Obtained wrong number of parameters. Expected: 2, obtained: ");
  const double lambda = std::max(parameters(0), math::kEps);
  const double k = std::max(parameters(1), kMinShape);
  const Eigen::Vector2d moments = Moments(lambda, k);
  const double mean = moments(0);
  const double sd = moments(1);
  const double allowed_mean = std::max(mean, math::kEps);
  const double allowed_sd =
      std::min(RaiseToFloor(allowed_mean, sd), allowed_mean * kMaxCoefficientOfVariation);
  if (allowed_mean != mean || allowed_sd != sd)
    TakeStats(allowed_mean, allowed_sd);
  else
    Store(Eigen::Vector2d(lambda, k), moments);
}

void RV_Weibull::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  const double mean = moments(0);
  const double sd = moments(1);
  if (mean < math::kEps) Raise(L": Mean value must be strictly positive.");
  RequireSpread(mean, sd);
  if (sd > mean * kMaxCoefficientOfVariation)
    Raise(L": Coefficient of variation must be smaller than 1e15.");
  TakeStats(mean, sd);
}

// Bisection of (0, 200) down to 2e-10. Interval and width are contract: variables of equal moments
// have equal parameters wherever they were made. A coefficient of variation below 0.0064, which
// would need a larger shape, is not reached.
void RV_Weibull::TakeStats(double mean, double sd) {
  constexpr double kWidth = 1e-10;
  const double target = std::log1p((sd / mean) * (sd / mean));
  double k = 100.0;
  for (double h = 50.0; h >= kWidth; h *= 0.5) k += LogVariation(k) < target ? -h : h;
  const Eigen::Vector2d parameters(mean / MeanOfUnitScale(k), k);
  const Eigen::Vector2d asked(mean, sd);
  const Eigen::Vector2d found = Moments(parameters(0), k);
  Store(parameters, IsReached(asked, found) ? asked : found);
}

void RV_Weibull::Reset() {
  TakeStats(1.0, 1.0);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Weibull)
