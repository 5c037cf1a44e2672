#include "doe/primitive_polynomials.h"

namespace corvath::math {
namespace {

/// Product of residues of `p`, whose degree is `degree`.
std::uint32_t Multiply(std::uint32_t a, std::uint32_t b, BinaryPolynomial p, int degree) {
  std::uint32_t product = 0;
  for (; b != 0; b >>= 1) {
    if ((b & 1U) != 0) product ^= a;
    a <<= 1;
    if ((a >> degree & 1U) != 0) a ^= p;
  }
  return product;
}

/// x^exponent as a residue of `p`.
std::uint32_t PowerOfX(std::uint32_t exponent, BinaryPolynomial p, int degree) {
  std::uint32_t power = 1;
  std::uint32_t square = degree == 1 ? 2U ^ p : 2U;
  for (; exponent != 0; exponent >>= 1) {
    if ((exponent & 1U) != 0) power = Multiply(power, square, p, degree);
    square = Multiply(square, square, p, degree);
  }
  return power;
}

}  // namespace

bool IsPrimitive(BinaryPolynomial p) {
  if ((p & 1U) == 0) return false;  // x divides it
  const int degree = Degree(p);
  // x has the order 2^degree - 1 if that power is 1 and none by a prime factor less is. An order
  // that large also proves that `p` is irreducible.
  const std::uint32_t order = (std::uint32_t{1} << degree) - 1;
  if (PowerOfX(order, p, degree) != 1) return false;
  std::uint32_t rest = order;
  for (std::uint32_t factor = 3; rest > 1; factor += 2) {
    if (factor > rest / factor) factor = rest;  // what is left is a prime
    if (rest % factor != 0) continue;
    if (PowerOfX(order / factor, p, degree) == 1) return false;
    while (rest % factor == 0) rest /= factor;
  }
  return true;
}

BinaryPolynomial NextPrimitive(BinaryPolynomial p) {
  do ++p;
  while (!IsPrimitive(p));
  return p;
}

}  // namespace corvath::math
