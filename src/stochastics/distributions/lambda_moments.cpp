#include "stochastics/distributions/lambda_moments.h"

#include <boost/math/policies/policy.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/multiprecision/cpp_bin_float.hpp>

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

constexpr auto MakePolicy() {
  using namespace boost::math::policies;
  return policy<domain_error<ignore_error>, pole_error<ignore_error>, overflow_error<ignore_error>,
                underflow_error<ignore_error>, evaluation_error<ignore_error>,
                promote_double<false>>();
}
constexpr auto kPolicy = MakePolicy();

template <class Real>
LambdaMoments Moments(const Real& a, const Real& b) {
  // Beta function of multiples of the shapes.
  const auto beta = [&](int of_a, int of_b) -> Real {
    return boost::math::beta(Real(of_a * a + 1), Real(of_b * b + 1), kPolicy);
  };
  const Real a2 = a * a, b2 = b * b;
  const Real q1 = 1 / (a * (a + 1)) - 1 / (b * (b + 1));
  const Real q2 = 1 / (a2 * (2 * a + 1)) + 1 / (b2 * (2 * b + 1)) - 2 / (a * b) * beta(1, 1);
  const Real q3 = 1 / (a2 * a * (3 * a + 1)) - 1 / (b2 * b * (3 * b + 1)) +
                  3 / (a * b2) * beta(1, 2) - 3 / (a2 * b) * beta(2, 1);
  const Real q4 = 1 / (a2 * a2 * (4 * a + 1)) + 1 / (b2 * b2 * (4 * b + 1)) -
                  4 / (a * b2 * b) * beta(1, 3) - 4 / (a2 * a * b) * beta(3, 1) +
                  6 / (a2 * b2) * beta(2, 2);
  const Real variance = q2 - q1 * q1;
  const Real third = q3 - 3 * q1 * q2 + 2 * q1 * q1 * q1;
  const Real fourth = q4 - 4 * q1 * q3 + 6 * q1 * q1 * q2 - 3 * q1 * q1 * q1 * q1;
  using std::sqrt;
  const Real sd = sqrt(variance);
  return {static_cast<double>(1 / (b + 1) - 1 / (a + 1)), static_cast<double>(sd),
          static_cast<double>(third / (variance * sd)),
          static_cast<double>(fourth / (variance * variance) - 3)};
}

}  // namespace

// The closed forms are differences of terms as large as shape^-4. Small shapes therefore need more
// digits than a double has: 50 of them leave 26 at the smallest shape, 1e-6.
LambdaMoments MomentsOfLambda(double a, double b) {
  constexpr double kEnough = 0.1;
  if (std::min(std::abs(a), std::abs(b)) > kEnough && std::max(a, b) < 1.0)
    return Moments<double>(a, b);
  using Real = boost::multiprecision::cpp_bin_float_50;
  return Moments<Real>(Real(a), Real(b));
}

}  // namespace corvath::algorithm
