#pragma once

#include "variant/value/variant.h"

/// Functions of pairs of numbers. The second argument is a SCALAR, or of the first one's kind and
/// size; signals meet on one timeline. `result` is written on success alone and may be an argument.
namespace corvath::math {

/// z^y: by repeated squaring where y is within IsZero of an integer, else exp(y ln z). 0^0 is 1.
/// @throws CComputationException z is 0 and y negative
Value::Complex Power(const Value::Complex& z, const Value::Complex& y);

namespace functions {

/// x - y floor(x / y), floor of real and imaginary part each for itself.
void mod(Value& result, const Value& x, const Value& y);
void pow(Value& result, const Value& x, const Value& y);
/// The product number by number; a SCALAR may stand on either side.
void times(Value& result, const Value& x, const Value& y);

}  // namespace functions
}  // namespace corvath::math
