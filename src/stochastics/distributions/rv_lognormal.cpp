#include "stochastics/distributions/rv_lognormal.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::algorithm {

namespace {
constexpr double kMaxMu = 100.0;
constexpr double kMaxShape = 10.0;
constexpr double kMaxCoefficientOfVariation = 1e20;
}  // namespace

double RV_Lognormal::GetLowerBound() const {
  return std::max(RV_Statistical_Moments(0) - 6.0 * RV_Statistical_Moments(1),
                  std::numeric_limits<double>::min());
}

double RV_Lognormal::PDF(double x) const {
  return x < GetLowerBound() ? 0.0 : RV_Gauss.PDF(std::log(x)) / x;
}

double RV_Lognormal::CDF(double x) const {
  return x < GetLowerBound() ? 0.0 : RV_Gauss.CDF(std::log(x));
}

double RV_Lognormal::InverseCDF(double p) const {
  return std::exp(RV_Gauss.InverseCDF(p));
}

std::vector<std::wstring> RV_Lognormal::GetParameterNames() const {
  return {L"Scale parameter mu", L"Shape parameter s"};
}

void RV_Lognormal::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 2, L": Obtained wrong number of parameters. Expected: 2, obtained: ");
  TakeParameters(parameters(0), parameters(1));
  const double mean = std::max(RV_Statistical_Moments(0), math::kEps);
  const double sd = RaiseToFloor(mean, RV_Statistical_Moments(1));
  const double cap = mean * kMaxCoefficientOfVariation;
  if (mean > RV_Statistical_Moments(0) || sd > RV_Statistical_Moments(1))
    TakeStats(mean, std::min(sd, cap));
  else if (sd > cap)
    RV_Statistical_Moments(1) = cap;  // the shape stays as it was asked for
}

void RV_Lognormal::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 2, L": Wrong number of statistical moments. Expected: 2, obtained: ");
  const double mean = moments(0);
  const double sd = moments(1);
  if (mean < math::kEps) Raise(L": Mean value must be strictly positive.");
  RequireSpread(mean, sd);
  if (sd > mean * kMaxCoefficientOfVariation)
    Raise(L": Coefficient of variation must be smaller than 1e20.");
  TakeStats(mean, sd);
}

void RV_Lognormal::TakeStats(double mean, double sd) {
  const double variation = sd / mean;
  const double s2 = std::log1p(variation * variation);
  TakeParameters(std::log(mean) - 0.5 * s2, std::sqrt(s2));
}

void RV_Lognormal::TakeParameters(double mu, double s) {
  s = std::clamp(s, math::kEps, kMaxShape);
  mu = std::clamp(mu, -kMaxMu, kMaxMu);
  const double mean = std::exp(mu + 0.5 * s * s);
  Store({mu, s}, {mean, std::sqrt(std::expm1(s * s)) * mean});
  RV_Gauss.SetExact(mu, s);
}

void RV_Lognormal::Reset() {
  TakeStats(1.0, 1.0);
}

template <class Archive>
void RV_Lognormal::SerializeFurther(Archive& ar) {
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Lognormal)
