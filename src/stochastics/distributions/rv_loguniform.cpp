#include "stochastics/distributions/rv_loguniform.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

constexpr double kMinValue = 10.0 * math::kEps;
constexpr double kMinCoefficientOfVariation = 1e-5;
constexpr double kMaxCoefficientOfVariation = 3.0;

/// q coth q - 1: the squared coefficient of variation, q being half of ln b - ln a. A series next to
/// 0, where the closed form cancels.
double SquaredVariation(double q) {
  if (q > 0.05) return q / std::tanh(q) - 1.0;
  const double q2 = q * q;
  return q2 * (1.0 / 3.0 - q2 * (1.0 / 45.0 - q2 * (2.0 / 945.0 - q2 / 4725.0)));
}

/// Its derivative.
double Slope(double q) {
  if (q > 0.05) {
    const double sinh = std::sinh(q);
    return 1.0 / std::tanh(q) - q / (sinh * sinh);
  }
  const double q2 = q * q;
  return q * (2.0 / 3.0 - q2 * (4.0 / 45.0 - q2 * (12.0 / 945.0 - q2 * 8.0 / 4725.0)));
}

/// ln b - ln a, exact for bounds that are close together, and without overflow.
double LogLength(double a, double b) {
  return b < 2.0 * a ? std::log1p((b - a) / a) : std::log(b) - std::log(a);
}

}  // namespace

double RV_Loguniform::GetLowerBound() const {
  return RV_Parameter(0);
}

double RV_Loguniform::GetUpperBound() const {
  return RV_Parameter(1);
}

double RV_Loguniform::PDF(double x) const {
  if (std::isnan(x)) return x;
  const double a = RV_Parameter(0);
  const double b = RV_Parameter(1);
  return x < a || x > b ? 0.0 : 1.0 / LogLength(a, b) / x;
}

double RV_Loguniform::CDF(double x) const {
  const double a = RV_Parameter(0);
  const double b = RV_Parameter(1);
  if (x <= a) return 0.0;
  return x >= b ? 1.0 : LogLength(a, x) / LogLength(a, b);
}

double RV_Loguniform::InverseCDF(double p) const {
  const double a = RV_Parameter(0);
  return a * std::exp(LogLength(a, RV_Parameter(1)) * p);
}

std::vector<std::wstring> RV_Loguniform::GetParameterNames() const {
  return {L"Lower bound a", L"Upper bound b"};
}

void RV_Loguniform::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Wrong number of statistical parameters. Expected: 2, obtained: ");
  auto [a, b] = std::minmax({parameters(0), parameters(1)});
  a = std::max(a, kMinValue);
  b = std::max(b, a + kMinValue);
  const double length = LogLength(a, b);
  const double mean = length > 0.0 ? (b - a) / length : a;  // a + kMinValue may be a
  const double sd = mean * std::sqrt(SquaredVariation(0.5 * length));
  const double allowed = std::min(std::max({sd, math::kEps, mean * kMinCoefficientOfVariation}),
                                  mean * kMaxCoefficientOfVariation);
  if (allowed != sd)
    TakeStats(mean, allowed);
  else
    Store({a, b}, {mean, sd});
}

void RV_Loguniform::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  const double mean = moments(0);
  const double sd = moments(1);
  if (mean <= 0.0) Raise(L": Mean value must be strictly positive.");
  if (sd <= 0.0) Raise(L": Standard deviation must be strictly positive.");
  if (mean * kMinCoefficientOfVariation > sd)
    Raise(L": Coefficient of variation must be larger than 1e-5.");
  if (sd > mean * kMaxCoefficientOfVariation)
    Raise(L": Coefficient of variation must be smaller than 3.0.");
  TakeStats(mean, sd);
}

// Newton's method on a convex function: the first step from the left of the root leads to its right,
// from where the iterates descend.
void RV_Loguniform::TakeStats(double mean, double sd) {
  const double target = (sd / mean) * (sd / mean);
  double q = std::sqrt(3.0 * target);
  for (int i = 0; i < 50; ++i) {
    const double step = (SquaredVariation(q) - target) / Slope(q);
    q -= step;
    if (std::abs(step) <= 1e-15 * q) break;
  }
  const double a = 2.0 * q * mean / std::expm1(2.0 * q);
  const double b = -2.0 * q * mean / std::expm1(-2.0 * q);
  const double found = mean * std::sqrt(SquaredVariation(0.5 * LogLength(a, b)));
  Store({a, b}, {mean, found});
  IsReached(Eigen::Vector2d(mean, sd), Eigen::Vector2d(mean, found));
}

void RV_Loguniform::Reset() {
  RV_Loguniform::SetParameters(Eigen::Vector2d(1.0, 2.0));
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Loguniform)
