#pragma once

#include "variant/value/variant.h"

/// Functions of each number of a value's data. Kind and timeline stay, the complex flag follows the
/// results, so that sqrt(-1) is complex; the domain is the whole plane.
///
/// `result` is written on success alone and may be the argument. BOOLEAN and UNINITIALIZED raise
/// CTypeException.
namespace corvath::math::functions {

void sin(Value& result, const Value& x);
void cos(Value& result, const Value& x);
/// @throws CDomainException the real part of an entry is an odd multiple of pi/2 by IsZero
void tan(Value& result, const Value& x);
void asin(Value& result, const Value& x);
void acos(Value& result, const Value& x);
void atan(Value& result, const Value& x);  ///< of +i and -i: infinite imaginary part
void sinh(Value& result, const Value& x);
void cosh(Value& result, const Value& x);
void tanh(Value& result, const Value& x);
void asinh(Value& result, const Value& x);
void acosh(Value& result, const Value& x);
void atanh(Value& result, const Value& x);

/// x pi / 180 and x 180 / pi.
void deg2rad(Value& result, const Value& x);
void rad2deg(Value& result, const Value& x);
void log(Value& result, const Value& x);  ///< to base 10
void ln(Value& result, const Value& x);
void exp(Value& result, const Value& x);
void sqrt(Value& result, const Value& x);  ///< principal branch

/// Real and imaginary part each for itself.
void ceil(Value& result, const Value& x);
void floor(Value& result, const Value& x);
/// To `digits` decimal places, which may be negative; halves go away from zero.
void round(Value& result, const Value& x, int digits = 0);
/// Numbers with an infinite part become NaN.
void inf2nan(Value& result, const Value& x);

}  // namespace corvath::math::functions
