#pragma once

#include "variant/value/variant.h"

/// How two values combine: one dispatch table on the pair of kinds for each operator. A SCALAR
/// broadcasts, a VECTOR gives one number for each channel of a SIGNAL, two signals meet on one
/// ascending timeline; nothing else is coerced, and a BOOLEAN takes part in no arithmetic.
///
/// `result` is written on success alone and may be one of the operands. Wrong kinds and sizes raise
/// exceptions of the CVariantException family; overflow, NaN and infinity pass as IEEE values, and
/// a division by zero gives NaN in both parts.
namespace corvath::math {

void Add(Value& result, const Value& left, const Value& right);
void Subtract(Value& result, const Value& left, const Value& right);
/// The algebraic product wherever the algebra defines one: VECTOR * VECTOR is the sum of products
/// without conjugation, MATRIX with VECTOR, MATRIX or a signal's data the matrix product.
void Multiply(Value& result, const Value& left, const Value& right);
/// Number by number, for matrices too.
void Divide(Value& result, const Value& left, const Value& right);

}  // namespace corvath::math
