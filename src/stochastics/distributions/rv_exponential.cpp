#include "stochastics/distributions/rv_exponential.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

double RV_Exponential::GetLowerBound() const {
  return RV_Parameter(1);
}

double RV_Exponential::PDF(double x) const {
  const double distance = x - RV_Parameter(1);
  return distance < 0.0 ? 0.0 : std::exp(-distance / RV_Parameter(0)) / RV_Parameter(0);
}

double RV_Exponential::CDF(double x) const {
  const double distance = x - RV_Parameter(1);
  if (distance < 0.0) return 0.0;
  return std::min(-std::expm1(-distance / RV_Parameter(0)), 1.0 - math::kProbabilityMin);
}

double RV_Exponential::InverseCDF(double p) const {
  // The probability above x is the one that is held above its minimum, which 1 - p is not exactly.
  const double log_above =
      1.0 - p <= math::kProbabilityMin ? std::log(math::kProbabilityMin) : std::log1p(-p);
  return RV_Parameter(1) - log_above * RV_Parameter(0);
}

std::vector<std::wstring> RV_Exponential::GetParameterNames() const {
  return {L"Scale parameter beta", L"Shift parameter epsilon"};
}

void RV_Exponential::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Obtained wrong number of parameters. Expected: 2, obtained: ");
  const double beta = std::max(parameters(0), math::kEps);
  const double mean = beta + parameters(1);
  const double sd = RaiseToFloor(mean, beta);
  if (sd > beta)
    TakeStats(mean, sd);
  else
    Store({beta, parameters(1)}, {mean, sd});
}

void RV_Exponential::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1));
}

void RV_Exponential::TakeStats(double mean, double sd) {
  Store({sd, mean - sd}, {mean, sd});
}

void RV_Exponential::Reset() {
  Store({1.0, 0.0}, {1.0, 1.0});
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Exponential)
