#include "stochastics/normal_quantile.h"

#include "foundation/constants.h"
#include "stochastics/special_functions.h"

#include <cmath>

namespace corvath::math {

double ClampProbability(double p) {
  if (p < kProbabilityMin) return kProbabilityMin;
  return p > 1.0 - kProbabilityMin ? 1.0 - kProbabilityMin : p;
}

double NormalPdf(double z) {
  return std::exp(-0.5 * z * z) * kInverseSqrtTwoPi;
}

double NormalCdf(double z) {
  return 0.5 * Erfc(-z / kSqrtTwo);
}

// M. J. Wichura, "Algorithm AS 241: The percentage points of the normal distribution", Applied
// Statistics 37 (1988), pp. 477-484, routine PPND16. Its third range begins below e^-25, which
// clamped probabilities do not reach.
double NormalQuantile(double p) {
  static_assert(kProbabilityMin > 1.4e-11);
  p = ClampProbability(p);
  const double q = p - 0.5;
  if (std::abs(q) <= 0.425) {
    const double r = 0.180625 - q * q;
    const double numerator =
        (((((((2509.0809287301226727 * r + 33430.575583588128105) * r + 67265.770927008700853) * r +
             45921.953931549871457) *
                r +
            13731.693765509461125) *
               r +
           1971.5909503065514427) *
              r +
          133.14166789178437745) *
             r +
         3.387132872796366608);
    const double denominator =
        (((((((5226.495278852545925 * r + 28729.085735721942674) * r + 39307.89580009271061) * r +
             21213.794301586595867) *
                r +
            5394.1960214247511077) *
               r +
           687.1870074920579083) *
              r +
          42.313330701600911252) *
             r +
         1.0);
    return q * numerator / denominator;
  }
  const double r = std::sqrt(-std::log(q < 0.0 ? p : 1.0 - p)) - 1.6;
  const double numerator = (((((((7.7454501427834140764e-4 * r + 0.0227238449892691845833) * r +
                                 0.24178072517745061177) *
                                    r +
                                1.27045825245236838258) *
                                   r +
                               3.64784832476320460504) *
                                  r +
                              5.7694972214606914055) *
                                 r +
                             4.6303378461565452959) *
                                r +
                            1.42343711074968357734);
  const double denominator = (((((((1.05075007164441684324e-9 * r + 5.475938084995344946e-4) * r +
                                   0.0151986665636164571966) *
                                      r +
                                  0.14810397642748007459) *
                                     r +
                                 0.68976733498510000455) *
                                    r +
                                1.6763848301838038494) *
                                   r +
                               2.05319162663775882187) *
                                  r +
                              1.0);
  return std::copysign(numerator / denominator, q);
}

}  // namespace corvath::math
