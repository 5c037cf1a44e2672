#pragma once

#include "variant/value/variant.h"

/// Linear algebra of complex vectors and matrices. `result` is written on success alone and may be
/// an argument.
namespace corvath::math::functions {

void transpose(Value& result, const Value& x);  ///< without conjugation
/// Sum of v_i u_i, without conjugation.
/// @throws CDimensionException lengths differ
void innerprod(Value& result, const Value& v, const Value& u);
/// MATRIX of v_i u_j. @throws CDimensionException more than kMaxEntries numbers
void outerprod(Value& result, const Value& v, const Value& u);
/// Product of VECTOR and MATRIX in either order, or of two MATRIX.
void matrixmult(Value& result, const Value& a, const Value& b);

/// L + U - E of the LU factorisation of a square MATRIX without pivoting.
/// @throws CVariantException a zero on the diagonal
void lufactorize(Value& result, const Value& x);
/// Negation of a BOOLEAN, 1/x of a SCALAR and of each entry of a VECTOR, the inverse of a square
/// MATRIX by LU factorisation with partial pivoting. Takes O(n^3) time.
/// @throws CVariantException the MATRIX is singular or not square
void invert(Value& result, const Value& x);

}  // namespace corvath::math::functions
