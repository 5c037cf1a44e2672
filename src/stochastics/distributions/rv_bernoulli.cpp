#include "stochastics/distributions/rv_bernoulli.h"

#include "stochastics/distributions/persisted_form.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm {

namespace {
constexpr double kMinProbability = 1e-12;
}

double RV_Bernoulli::GetLowerBound() const {
  return 0.0;
}

double RV_Bernoulli::GetUpperBound() const {
  return 1.0;
}

double RV_Bernoulli::PMF(double x) const {
  if (x == 0.0) return 1.0 - RV_Parameter(0);
  return x == 1.0 ? RV_Parameter(0) : 0.0;
}

double RV_Bernoulli::PDF(double x) const {
  return x == 0.0 || x == 1.0 || std::isnan(x) ? std::numeric_limits<double>::quiet_NaN() : 0.0;
}

Eigen::MatrixXd RV_Bernoulli::GetStates() const {
  return Eigen::Matrix2d{{0.0, 1.0 - RV_Parameter(0)}, {1.0, RV_Parameter(0)}};
}

double RV_Bernoulli::CDF(double x) const {
  if (std::isnan(x)) return x;
  if (x < 0.0) return 0.0;
  return x >= 1.0 ? 1.0 : 1.0 - RV_Parameter(0);
}

double RV_Bernoulli::InverseCDF(double p) const {
  if (std::isnan(p)) return p;
  return 1.0 - RV_Parameter(0) >= p ? 0.0 : 1.0;
}

std::vector<std::wstring> RV_Bernoulli::GetParameterNames() const {
  return {L"Success probability"};
}

void RV_Bernoulli::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 1, L": Wrong number of statistical parameters. Expected: 1, obtained: ");
  const double p = std::clamp(parameters(0), kMinProbability, 1.0 - kMinProbability);
  Store({p}, {p, std::sqrt((1.0 - p) * p)});
}

void RV_Bernoulli::SetStats(const Eigen::VectorXd& moments) {
  if (moments.size() != 1 && moments.size() != 2)
    Raise(L": Wrong number of statistical moments. Expected: 1 or 2, obtained: " +
          std::to_wstring(moments.size()));
  RequireMagnitude(moments);
  if (moments(0) < kMinProbability) Raise(L": Mean value must be larger than zero.");
  if (moments(0) > 1.0 - kMinProbability) Raise(L": Mean value must be smaller than one.");
  SetParameters(moments.head<1>());
}

void RV_Bernoulli::Reset() {
  Store({0.5}, {0.5, 0.5});
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Bernoulli)
