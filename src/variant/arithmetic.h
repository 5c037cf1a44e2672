#pragma once

#include "variant/variant.h"

namespace corvath::math {

/// result = left - right, element by element; a SCALAR broadcasts. `result` is written on success
/// only and may be one of the operands. Signals take no part yet.
/// @throws CTypeException       a BOOLEAN, nothing or a signal on either side, or kinds that differ
/// @throws CDimensionException  the sizes differ
void Subtract(Value& result, const Value& left, const Value& right);

}  // namespace corvath::math
