#include "stochastics/distributions/rv_uniform.h"

#include "stochastics/distributions/persisted_form.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

double RV_Uniform::GetLowerBound() const {
  return RV_Parameter(0);
}

double RV_Uniform::GetUpperBound() const {
  return RV_Parameter(1);
}

double RV_Uniform::PDF(double x) const {
  const double a = RV_Parameter(0);
  const double b = RV_Parameter(1);
  if (std::isnan(x)) return x;
  return x < a || x > b ? 0.0 : 1.0 / (b - a);
}

double RV_Uniform::CDF(double x) const {
  const double a = RV_Parameter(0);
  const double b = RV_Parameter(1);
  if (x < a) return 0.0;
  return x > b ? 1.0 : (x - a) / (b - a);
}

double RV_Uniform::InverseCDF(double p) const {
  return (RV_Parameter(1) - RV_Parameter(0)) * p + RV_Parameter(0);
}

std::vector<std::wstring> RV_Uniform::GetParameterNames() const {
  return {L"Lower bound a", L"Upper bound b"};
}

void RV_Uniform::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Wrong number of statistical parameters. Expected: 2, obtained: ");
  const auto [a, b] = std::minmax({parameters(0), parameters(1)});
  const double mean = 0.5 * a + 0.5 * b;
  const double sd = (b - a) / kUniformLength;
  const double floored = RaiseToFloor(mean, sd);
  if (floored > sd)
    TakeStats(mean, floored);
  else
    Store({a, b}, {mean, sd});
}

void RV_Uniform::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1));
}

void RV_Uniform::TakeStats(double mean, double sd) {
  const double half = 0.5 * kUniformLength * sd;
  Store({mean - half, mean + half}, {mean, sd});
}

void RV_Uniform::Reset() {
  Store({0.0, 1.0}, {0.5, 1.0 / kUniformLength});
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Uniform)
