#include "stochastics/distributions/rv_normal.h"

#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"

namespace corvath::algorithm {

double RV_Normal::PDF(double x) const {
  return math::NormalPdf((x - RV_Parameter(0)) / RV_Parameter(1)) / RV_Parameter(1);
}

double RV_Normal::CDF(double x) const {
  return math::NormalCdf((x - RV_Parameter(0)) / RV_Parameter(1));
}

double RV_Normal::InverseCDF(double p) const {
  return RV_Parameter(0) + RV_Parameter(1) * math::NormalQuantile(p);
}

std::vector<std::wstring> RV_Normal::GetParameterNames() const {
  return {L"Mean value mu", L"Standard deviation s"};
}

void RV_Normal::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Wrong number of statistical parameters. Expected: 2, obtained: ");
  const double mu = parameters(0);
  SetExact(mu, RaiseToFloor(mu, parameters(1)));
}

void RV_Normal::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of moments. Expected: 2, obtained: ");
  RequireSpread(moments(0), moments(1));
  SetParameters(moments);
}

void RV_Normal::Reset() {
  SetExact(0.0, 1.0);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Normal)
