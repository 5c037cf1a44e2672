#include "stochastics/normal_quantile.h"

#include "stochastics/special_functions.h"

#include <cmath>

namespace corvath::math {

namespace {
constexpr double kSqrtTwo = 1.4142135623730951;
}

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

double NormalQuantile(double p) {
  return -kSqrtTwo * ErfcInverse(2.0 * ClampProbability(p));
}

}  // namespace corvath::math
