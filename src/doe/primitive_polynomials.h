#pragma once

#include <cstdint>

namespace corvath::math {

/// A polynomial over GF(2): bit i is the coefficient of x^i.
using BinaryPolynomial = std::uint32_t;

/// Degree of a polynomial that is not 0.
constexpr int Degree(BinaryPolynomial p) {
  return 31 - __builtin_clz(p);
}

/// Whether the powers of x run through all nonzero residues of `p`. Degree from 1 to 31.
bool IsPrimitive(BinaryPolynomial p);

/// The primitive polynomial that follows `p` by degree, then by value as a number.
BinaryPolynomial NextPrimitive(BinaryPolynomial p);

}  // namespace corvath::math
