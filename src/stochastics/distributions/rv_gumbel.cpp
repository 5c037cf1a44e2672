#include "stochastics/distributions/rv_gumbel.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {
constexpr double kEulerGamma = 0.57721566490153287;
constexpr double kSdOfScale = 1.282549830161864;  // pi / sqrt(6)
}  // namespace

double RV_Gumbel::PDF(double x) const {
  const double z = std::exp(-(x - RV_Parameter(0)) / RV_Parameter(1));
  return std::isinf(z) ? 0.0 : std::exp(-z) * z / RV_Parameter(1);
}

double RV_Gumbel::CDF(double x) const {
  return std::exp(-std::exp(-(x - RV_Parameter(0)) / RV_Parameter(1)));
}

double RV_Gumbel::InverseCDF(double p) const {
  return RV_Parameter(0) - std::log(-std::log(math::ClampProbability(p))) * RV_Parameter(1);
}

std::vector<std::wstring> RV_Gumbel::GetParameterNames() const {
  return {L"Location parameter mu", L"Scale parameter beta"};
}

void RV_Gumbel::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Obtained wrong number of parameters. Expected: 2, obtained: ");
  const double mu = parameters(0);
  const double beta = std::max(parameters(1), math::kEps);
  const double mean = mu + kEulerGamma * beta;
  const double sd = kSdOfScale * beta;
  const double floored = RaiseToFloor(mean, sd);
  if (floored > sd)
    TakeStats(mean, floored);
  else
    Store({mu, beta}, {mean, sd});
}

void RV_Gumbel::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1));
}

void RV_Gumbel::TakeStats(double mean, double sd) {
  const double beta = sd / kSdOfScale;
  Store({mean - kEulerGamma * beta, beta}, {mean, sd});
}

void RV_Gumbel::Reset() {
  TakeStats(1.0, 1.0);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Gumbel)
