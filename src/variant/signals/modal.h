#pragma once

#include "variant/value/variant.h"

/// Comparison of two sets of modal vectors, the columns a_i and b_j of two MATRIX of equal row
/// counts. `result` is written on success alone and may be an argument. <a, b> is the sum of
/// conj(a_k) b_k.
namespace corvath::math::functions {

/// Modal assurance criterion |<a_i, b_j>|^2 / (<a_i, a_i> <b_j, b_j>), 1 for parallel vectors of any
/// complex scale; NaN for a zero vector. R. J. Allemang, D. L. Brown, "A correlation coefficient for
/// modal vector analysis", Proc. 1st IMAC, 1982, pp. 110-116.
/// @throws CTypeException no MATRIX, CDimensionException row counts differ
void mac(Value& result, const Value& a, const Value& b);
/// mac of the rows: one number for each pair of degrees of freedom.
/// @throws CTypeException no MATRIX, CDimensionException the shapes differ
void comac(Value& result, const Value& a, const Value& b);
/// Signature difference indicator 4 (Re <a_i, b_j> / (<a_i, a_i> + <b_j, b_j>))^2, which sees the
/// scale too. Throws like mac.
void sdi(Value& result, const Value& a, const Value& b);
/// For each b_j the index of the first a_i with the highest mac, if that is above the real SCALAR
/// `limit`; else NaN. A VECTOR.
void modepairs(Value& result, const Value& a, const Value& b, const Value& limit);

}  // namespace corvath::math::functions
