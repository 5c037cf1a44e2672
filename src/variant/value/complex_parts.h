#pragma once

#include "variant/value/variant.h"

/// Parts of complex numbers, and complex numbers of parts. `result` is written on success alone and
/// may be an argument.
namespace corvath::math::functions {

// Number by number, as in variant/operators/elementwise.h.
void conj(Value& result, const Value& x);
void real(Value& result, const Value& x);
void imag(Value& result, const Value& x);
void abs(Value& result, const Value& x);
void arg(Value& result, const Value& x);   ///< in (-pi, pi]
void norm(Value& result, const Value& x);  ///< re^2 + im^2

/// x / |x| of a SCALAR; 1, -1 or 0 of a real one.
void sgn(Value& result, const Value& x);

/// a + b i of real values of one kind; signals meet on one timeline.
void cplx(Value& result, const Value& a, const Value& b);
/// atan2(y, x) of real values of one kind and size, no signals.
void atan2(Value& result, const Value& y, const Value& x);
/// Of a SCALAR atan2(Im x, Re x), of a real signal atan2(channel, abscissa).
void atan2(Value& result, const Value& x);

/// Magnitude and phase: of a SCALAR the VECTOR {|z|, arg z}, of a VECTOR a MATRIX of these two
/// rows, of a MATRIX or signal two such rows for each row.
void cart2pol(Value& result, const Value& x);
/// The inverse, of real input: a VECTOR holds magnitude and phase in turn, of which one pair gives
/// a SCALAR; a MATRIX or SIGNAL has them in rows 2k and 2k + 1.
void pol2cart(Value& result, const Value& x);

}  // namespace corvath::math::functions
