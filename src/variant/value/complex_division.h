#pragma once

#include "foundation/constants.h"

#include <cmath>
#include <complex>

namespace corvath::math {

/// a / b in every division of the value type: R. L. Smith, "Algorithm 116: Complex division", CACM
/// 5 (1962), p. 435. Where the divisor is 0 or NaN both parts are NaN; nothing raises.
inline std::complex<double> Quotient(const std::complex<double>& a, const std::complex<double>& b) {
  const double c = b.real();
  const double d = b.imag();
  if (std::isnan(c) || std::isnan(d)) return {kNaN, kNaN};
  if (std::abs(c) > std::abs(d)) {
    const double r = d / c;
    const double e = r * d + c;
    if (std::isnan(e) || e == 0.0) return {kNaN, kNaN};
    return {(a.real() + a.imag() * r) / e, (a.imag() - a.real() * r) / e};
  }
  if (d != 0.0) {
    const double r = c / d;
    const double e = r * c + d;
    return {(a.real() * r + a.imag()) / e, (a.imag() * r - a.real()) / e};
  }
  return {kNaN, kNaN};
}

}  // namespace corvath::math
