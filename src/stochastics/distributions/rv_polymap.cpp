#include "stochastics/distributions/rv_polymap.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

using Eigen::Vector3d;

const Vector3d kPlainNormal(1.0, 0.0, 0.0);

/// Variance, third central moment and excess of the fourth one over 3 of b u - c + c u^2 + d u^3.
/// The first coefficient of the last one is what stored fits rest on; the moment of the polynomial
/// has 10395 there, so the kurtosis is too high by 4 d^4.
Vector3d CentralMoments(const Vector3d& x) {
  const double b = x(0), c = x(1), d = x(2);
  const double b2 = b * b, c2 = c * c, d2 = d * d;
  return {15.0 * d2 + 6.0 * b * d + 2.0 * c2 + b2,
          270.0 * c * d2 + 72.0 * b * c * d + 8.0 * c2 * c + 6.0 * b2 * c,
          10399.0 * d2 * d2 + 3780.0 * b * d2 * d + (4500.0 * c2 + 630.0 * b2) * d2 +
              (936.0 * b * c2 + 60.0 * b2 * b) * d + 60.0 * c2 * c2 + 60.0 * b2 * c2 +
              3.0 * b2 * b2 - 3.0};
}

/// Derivatives of CentralMoments by b, c and d.
Eigen::Matrix3d Jacobian(const Vector3d& x) {
  const double b = x(0), c = x(1), d = x(2);
  const double b2 = b * b, c2 = c * c, d2 = d * d;
  Eigen::Matrix3d result;
  result << 6.0 * d + 2.0 * b,  //
      4.0 * c,                  //
      30.0 * d + 6.0 * b,       //
      72.0 * c * d + 12.0 * b * c, 270.0 * d2 + 72.0 * b * d + 24.0 * c2 + 6.0 * b2,
      540.0 * c * d + 72.0 * b * c,
      3780.0 * d2 * d + 1260.0 * b * d2 + (936.0 * c2 + 180.0 * b2) * d + 120.0 * b * c2 +
          12.0 * b2 * b,
      9000.0 * c * d2 + 1872.0 * b * c * d + 240.0 * c2 * c + 120.0 * b2 * c,
      41596.0 * d2 * d + 11340.0 * b * d2 + (9000.0 * c2 + 1260.0 * b2) * d + 936.0 * b * c2 +
          60.0 * b2 * b;
  return result;
}

/// Whether the cubic rises everywhere with a margin; a straight line rises as well.
bool IsMonotone(const Vector3d& x) {
  const double b = x(0), c = x(1), d = x(2);
  if (c == 0.0 && d == 0.0) return b > 0.0;
  return b > 0.0 && c * c - 3.0 * b * d <= -1e-10;
}

/// Coefficients with the variance 1 and the given shape; of the plain normal distribution where
/// Newton's method finds none that are monotone.
Vector3d FitCoefficients(double skewness, double kurtosis) {
  constexpr double kNoExcess = 1e-6;
  constexpr int kMaxIterations = 100;
  constexpr double kTolerance = 1e-10;
  if (kurtosis <= kNoExcess) return kPlainNormal;
  const Vector3d target(1.0, skewness, kurtosis);
  Vector3d x = kPlainNormal;
  for (int i = 0; i < kMaxIterations; ++i) {
    const Vector3d error = CentralMoments(x) - target;
    if (error.norm() <= kTolerance) return IsMonotone(x) ? x : kPlainNormal;
    x -= Jacobian(x).fullPivLu().solve(error);
  }
  return kPlainNormal;
}

double Polynomial(const Vector3d& x, double u) {
  return x(0) * u + x(1) * (u * u - 1.0) + x(2) * u * u * u;
}

double Slope(const Vector3d& x, double u) {
  return x(0) + u * (2.0 * x(1) + 3.0 * x(2) * u);
}

}  // namespace

double RV_Polymap::ToGauss(double x) const {
  const Vector3d c = RV_Parameter.tail<3>();
  const double target = (x - RV_Parameter(0)) / RV_Parameter(1);
  if (!std::isfinite(target)) return target;
  constexpr int kMaxIterations = 100;
  constexpr double kTolerance = 1e-6;  // of the last step; the next one would be of its square
  double u = 0.0;
  for (int i = 0; i < kMaxIterations; ++i) {
    const double step = (Polynomial(c, u) - target) / Slope(c, u);
    u -= step;
    if (std::abs(step) < kTolerance) return u;
  }
  // Newton's method may run in a circle about a flat stretch. Halving does not, on a rising cubic.
  double low = -1.0;
  double high = 1.0;
  while (Polynomial(c, low) > target && low > -1e150) low *= 2.0;
  while (Polynomial(c, high) < target && high < 1e150) high *= 2.0;
  for (int i = 0; i < 1100; ++i) {
    u = 0.5 * (low + high);
    if (u <= low || u >= high) break;
    (Polynomial(c, u) < target ? low : high) = u;
  }
  return u;
}

double RV_Polymap::PDF(double x) const {
  const double u = ToGauss(x);
  const double density = RV_Gauss.PDF(u);
  // Far out the slope grows without bound while the density is already 0.
  return density == 0.0 ? 0.0 : density / (RV_Parameter(1) * Slope(RV_Parameter.tail<3>(), u));
}

double RV_Polymap::CDF(double x) const {
  return RV_Gauss.CDF(ToGauss(x));
}

double RV_Polymap::InverseCDF(double p) const {
  return RV_Parameter(0) +
         RV_Parameter(1) * Polynomial(RV_Parameter.tail<3>(), RV_Gauss.InverseCDF(p));
}

std::vector<std::wstring> RV_Polymap::GetMomentNames() const {
  return {L"Mean value", L"Standard deviation", L"Skewness", L"Excess kurtosis"};
}

std::vector<std::wstring> RV_Polymap::GetParameterNames() const {
  return {L"Mean value", L"Standard deviation", L"Linear coefficient b", L"Quadratic coefficient c",
          L"Cubic coefficient d"};
}

void RV_Polymap::SetParameters(const Eigen::VectorXd& parameters) {
  if (parameters.size() != 5) {
    RV_Polymap::SetStats(parameters);
    return;
  }
  RequireMagnitude(parameters);
  const Vector3d coefficients = parameters.tail<3>();
  TakeCoefficients(parameters(0), std::max(parameters(1), math::kEps),
                   IsMonotone(coefficients) ? coefficients : kPlainNormal);
}

void RV_Polymap::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 4, L": Wrong number of statistical moments. Expected: 4, obtained: ");
  const Eigen::Vector4d asked = moments;  // which may be the moments that change here
  const double sd = asked(1);
  if (sd < math::kEps)
    Raise(L": Standard deviation  (" + Format(sd) + L") must be strictly positive.");
  TakeCoefficients(asked(0), sd, FitCoefficients(asked(2), asked(3)));
  IsReached(asked, RV_Statistical_Moments);
}

void RV_Polymap::TakeCoefficients(double mean, double sd, const Vector3d& coefficients) {
  const Vector3d f = CentralMoments(coefficients);
  const double root = std::sqrt(f(0));
  Store({mean, sd, coefficients(0), coefficients(1), coefficients(2)},
        {mean, root * sd, f(1) / (root * root * root), (f(2) + 3.0) / (f(0) * f(0)) - 3.0});
}

void RV_Polymap::Reset() {
  TakeCoefficients(0.0, 1.0, kPlainNormal);
}

template <class Archive>
void RV_Polymap::SerializeFurther(Archive& ar) {
  ar& BOOST_SERIALIZATION_NVP(RV_Gauss);
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Polymap)
