#include "stochastics/special_functions.h"

#include <boost/math/policies/policy.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>

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

}  // namespace

double Erfc(double x) {
  if (std::isinf(x)) return x > 0.0 ? 0.0 : 2.0;
  return boost::math::erfc(x, kPolicy);
}

double ErfcInverse(double p) {
  return boost::math::erfc_inv(p, kPolicy);
}

double Gamma(double x) {
  return boost::math::tgamma(x, kPolicy);
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
  return boost::math::ibeta(a, b, x, kPolicy);
}

double IncompleteBetaComplement(double a, double b, double x) {
  return boost::math::ibetac(a, b, x, kPolicy);
}

double IncompleteBetaInverse(double a, double b, double p) {
  if (std::isnan(p)) return p;
  return boost::math::ibeta_inv(a, b, p, kPolicy);
}

double IncompleteGammaUpper(double a, double x) {
  return boost::math::gamma_q(a, x, kPolicy);
}

}  // namespace corvath::math
