#include "stochastics/special_functions.h"

#include "stochastics/large_shapes.h"

#include <boost/math/policies/policy.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>

#include <algorithm>
#include <cmath>

namespace corvath::math {

namespace {

/// IEEE values in place of exceptions. Without promotion to long double, which costs a multiple of
/// the time for bits that the result cannot hold.
constexpr auto MakePolicy() {
  using namespace boost::math::policies;
  return policy<domain_error<ignore_error>, pole_error<ignore_error>, overflow_error<ignore_error>,
                underflow_error<ignore_error>, denorm_error<ignore_error>,
                evaluation_error<ignore_error>, rounding_error<ignore_error>,
                indeterminate_result_error<ignore_error>, promote_double<false>>();
}
constexpr auto kPolicy = MakePolicy();

/// From here on, next to another one below kLargeShape, a shape makes the logarithm of a beta
/// variable a gamma variable up to rounding: the scales differ by (b / rate)^2 / 12. Boost's
/// inverse does not end at 1e100.
constexpr double kHugeShape = 1e15;

/// For x of the beta distribution (huge, b), -ln(x) times this is of the gamma distribution b.
double GammaRate(double huge, double b) {
  return huge + 0.5 * (b - 1.0);
}

}  // namespace

double Erfc(double x) {
  if (std::isinf(x)) return x > 0.0 ? 0.0 : 2.0;
  return boost::math::erfc(x, kPolicy);
}

double ErfcInverse(double p) {
  return boost::math::erfc_inv(p, kPolicy);
}

double LogGamma(double x) {
  return boost::math::lgamma(x, kPolicy);
}

double LogGamma1p(double x) {
  // Where G(1 + x) - 1 is a small number, it is known better than G(1 + x) itself.
  return std::abs(x) < 0.4 ? std::log1p(boost::math::tgamma1pm1(x, kPolicy)) : LogGamma(1.0 + x);
}

double Beta(double a, double b) {
  return boost::math::beta(a, b, kPolicy);
}

double IncompleteBeta(double a, double b, double x) {
  if (std::isnan(x)) return x;
  if (std::min(a, b) >= kLargeShape) return BetaLowerOfLargeShapes(a, b, x);
  if (a >= kHugeShape) return boost::math::gamma_q(b, -std::log(x) * GammaRate(a, b), kPolicy);
  if (b >= kHugeShape) return boost::math::gamma_p(a, -std::log1p(-x) * GammaRate(b, a), kPolicy);
  return boost::math::ibeta(a, b, x, kPolicy);
}

double IncompleteBetaComplement(double a, double b, double x) {
  if (std::isnan(x)) return x;
  if (std::max(a, b) >= kHugeShape || std::min(a, b) >= kLargeShape)
    return IncompleteBeta(b, a, 1.0 - x);
  return boost::math::ibetac(a, b, x, kPolicy);
}

double IncompleteBetaInverse(double a, double b, double p) {
  if (std::isnan(p)) return p;
  if (std::min(a, b) >= kLargeShape) return BetaQuantileOfLargeShapes(a, b, p);
  if (a >= kHugeShape) return std::exp(-boost::math::gamma_q_inv(b, p, kPolicy) / GammaRate(a, b));
  if (b >= kHugeShape)
    return -std::expm1(-boost::math::gamma_p_inv(a, p, kPolicy) / GammaRate(b, a));
  return boost::math::ibeta_inv(a, b, p, kPolicy);
}

double BetaDensity(double a, double b, double x) {
  if (std::isnan(x)) return x;
  if (std::min(a, b) >= kLargeShape) return BetaDensityOfLargeShapes(a, b, x);
  if (a >= kHugeShape) {
    const double rate = GammaRate(a, b);
    return boost::math::gamma_p_derivative(b, -std::log(x) * rate, kPolicy) * rate / x;
  }
  if (b >= kHugeShape) {
    const double rate = GammaRate(b, a);
    return boost::math::gamma_p_derivative(a, -std::log1p(-x) * rate, kPolicy) * rate / (1.0 - x);
  }
  return boost::math::ibeta_derivative(a, b, x, kPolicy);
}

double IncompleteGammaUpper(double a, double x) {
  if (std::isnan(x)) return x;
  if (a >= kLargeShape) return GammaUpperOfLargeShape(a, x);
  return boost::math::gamma_q(a, x, kPolicy);
}

double GammaDensity(double a, double x) {
  if (std::isnan(x)) return x;
  if (a >= kLargeShape) return GammaDensityOfLargeShape(a, x);
  return boost::math::gamma_p_derivative(a, x, kPolicy);
}

}  // namespace corvath::math
