#include "stochastics/distributions/rv_triangular.h"

#include "foundation/closeness.h"
#include "foundation/constants.h"
#include "stochastics/distributions/persisted_form.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace corvath::algorithm {

namespace {

constexpr double kSqrtSix = 2.449489742783178;
constexpr double kMaxSkewness = 0.4 * math::kSqrtTwo;  // of the right-angled triangle

Eigen::Vector3d Moments(double a, double c, double b) {
  const double mean = a / 3.0 + b / 3.0 + c / 3.0;
  const double ab = b - a;
  const double ac = c - a;
  const double cb = b - c;
  const double sd = std::hypot(ab, ac, cb) / 6.0;
  // (a + b - 2c)(2a - b - c)(a - 2b + c) / 270 / sd^3, in distances
  const double skewness =
      sd > 0.0 ? (cb - ac) / sd * ((ab + ac) / sd) * ((ab + cb) / sd) / 270.0 : 0.0;
  return {mean, sd, skewness};
}

}  // namespace

double RV_Triangular::GetLowerBound() const {
  return RV_Parameter(0);
}

double RV_Triangular::GetUpperBound() const {
  return RV_Parameter(2);
}

double RV_Triangular::PDF(double x) const {
  const double a = RV_Parameter(0);
  const double c = RV_Parameter(1);
  const double b = RV_Parameter(2);
  if (x <= a || x >= b) return 0.0;
  return x < c ? 2.0 * (x - a) / (b - a) / (c - a) : 2.0 * (b - x) / (b - a) / (b - c);
}

double RV_Triangular::CDF(double x) const {
  const double a = RV_Parameter(0);
  const double c = RV_Parameter(1);
  const double b = RV_Parameter(2);
  if (x <= a) return 0.0;
  if (x >= b) return 1.0;
  return x < c ? (x - a) / (b - a) * ((x - a) / (c - a))
               : 1.0 - (b - x) / (b - a) * ((b - x) / (b - c));
}

double RV_Triangular::InverseCDF(double p) const {
  const double a = RV_Parameter(0);
  const double c = RV_Parameter(1);
  const double b = RV_Parameter(2);
  if (p <= 0.0) return a;
  if (p >= 1.0) return b;
  const double at_mode = (c - a) / (b - a);
  return p < at_mode ? a + std::sqrt(p / at_mode) * (c - a)
                     : b - std::sqrt((1.0 - p) / (1.0 - at_mode)) * (b - c);
}

std::vector<std::wstring> RV_Triangular::GetMomentNames() const {
  return {L"Mean value", L"Standard deviation", L"Skewness"};
}

std::vector<std::wstring> RV_Triangular::GetParameterNames() const {
  return {L"Lower bound a", L"Mode value c", L"Upper bound b "};
}

void RV_Triangular::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 3, L": Wrong number of statistical parameters. Expected 3, obtained ");
  std::array<double, 3> sorted = {parameters(0), parameters(1), parameters(2)};
  std::sort(sorted.begin(), sorted.end());
  const Eigen::Vector3d moments = Moments(sorted[0], sorted[1], sorted[2]);
  const double sd = RaiseToFloor(moments(0), moments(1));
  if (moments(1) >= sd)
    TakeParameters(sorted[0], sorted[1], sorted[2]);
  else
    TakeStats(moments(0), sd, moments(2));
}

void RV_Triangular::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 3, L": Wrong number of statistical moments. Expected 3, obtained :");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1), moments(2));
}

// About the mean and in standard deviations, the three parameters are the roots of a cubic without
// a quadratic term: sqrt(8) cos(phi + 2 pi k / 3), where the skewness is 0.4 sqrt(2) cos(3 phi).
void RV_Triangular::TakeStats(double mean, double sd, double skewness) {
  const double scale = 2.0 * math::kSqrtTwo * sd;
  if (std::abs(skewness) < 10.0 * math::kEps) {
    TakeParameters(mean - kSqrtSix * sd, mean, mean + kSqrtSix * sd);
  } else if (skewness >= kMaxSkewness) {
    TakeParameters(mean - 0.5 * scale, mean - 0.5 * scale, mean + scale);
  } else if (skewness <= -kMaxSkewness) {
    TakeParameters(mean - scale, mean + 0.5 * scale, mean + 0.5 * scale);
  } else {
    const double phi = std::acos(skewness / kMaxSkewness) / 3.0;
    TakeParameters(mean + scale * std::cos(phi + 2.0 * math::kPi / 3.0),
                   mean + scale * std::cos(phi - 2.0 * math::kPi / 3.0),
                   mean + scale * std::cos(phi));
  }
  IsReached(Eigen::Vector3d(mean, sd, skewness), RV_Statistical_Moments);
}

void RV_Triangular::TakeParameters(double a, double c, double b) {
  Store(Eigen::Vector3d(a, c, b), Moments(a, c, b));
}

void RV_Triangular::Reset() {
  TakeParameters(0.0, 0.5, 1.0);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Triangular)
