#include "stochastics/distributions/rv_poisson.h"

#include "stochastics/distributions/persisted_form.h"
#include "stochastics/special_functions.h"

#include <boost/numeric/conversion/cast.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace corvath::algorithm {

namespace {

constexpr double kMinLambda = 1e-12;
constexpr double kMaxProbability = 1.0 - 1e-10;
constexpr std::int64_t kMaxStates = 10'000'000;  // of a table that still makes sense

bool IsState(double x) {
  return x >= 0.0 && std::floor(x) == x && std::isfinite(x);
}

}  // namespace

double RV_Poisson::GetLowerBound() const {
  return 0.0;
}

double RV_Poisson::PMF(double x) const {
  if (!IsState(x)) return 0.0;
  return math::GammaDensity(x + 1.0, RV_Parameter(0));  // lambda^x e^-lambda / x!
}

double RV_Poisson::PDF(double x) const {
  return IsState(x) || std::isnan(x) ? std::numeric_limits<double>::quiet_NaN() : 0.0;
}

// The sum of PMF(k) for k up to x is a regularised incomplete gamma function, which costs the same
// for every x.
double RV_Poisson::CDF(double x) const {
  if (std::isnan(x)) return x;
  if (x < 0.0) return 0.0;
  if (std::isinf(x)) return 1.0;
  return math::IncompleteGammaUpper(std::floor(x) + 1.0, RV_Parameter(0));
}

double RV_Poisson::InverseCDF(double p) const {
  if (std::isnan(p)) return p;
  const double bounded = std::min(p, kMaxProbability);
  if (CDF(0.0) >= bounded) return 0.0;
  double low = 0.0;  // too small
  double high = 1.0;
  while (CDF(high) < bounded && high < 10.0 * kMaxMagnitude) high *= 2.0;
  while (true) {
    const double middle = std::floor(0.5 * low + 0.5 * high);
    if (middle <= low || middle >= high) return high;
    (CDF(middle) < bounded ? low : high) = middle;
  }
}

Eigen::MatrixXd RV_Poisson::GetStates() const {
  const auto last = boost::numeric_cast<std::int64_t>(InverseCDF(1.0));
  if (last >= kMaxStates) Raise(L": Too many states for a table: " + std::to_wstring(last));
  Eigen::MatrixXd states(last + 1, 2);
  for (Eigen::Index k = 0; k <= last; ++k) {
    states(k, 0) = static_cast<double>(k);
    states(k, 1) = PMF(static_cast<double>(k));
  }
  return states;
}

std::vector<std::wstring> RV_Poisson::GetParameterNames() const {
  return {L"Expected number of events"};
}

void RV_Poisson::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 1, L": Wrong number of statistical parameters. Expected 1, obtained: ");
  const double lambda = std::max(parameters(0), kMinLambda);
  Store({lambda}, {lambda, std::sqrt(lambda)});
}

void RV_Poisson::SetStats(const Eigen::VectorXd& moments) {
  if (moments.size() != 1 && moments.size() != 2)
    Raise(L": Wrong number of statistical moments. Expected: 1 or 2, obtained: " +
          std::to_wstring(moments.size()));
  RequireMagnitude(moments);
  if (moments(0) < kMinLambda) Raise(L": Mean value must be strictly positive.");
  SetParameters(moments.head<1>());
}

void RV_Poisson::Reset() {
  Store({1.0}, {1.0, 1.0});
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Poisson)
