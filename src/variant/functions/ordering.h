#pragma once

#include "variant/value/variant.h"

namespace corvath::math {

/// The ordering comparisons of two real values of one kind: false before true, numbers by their
/// real parts; for vectors and matrices of one size the relation holds when it holds for every
/// element, so that it is no total order, and it holds for empty ones.
/// @throws CVariantException       a value is complex or a signal
/// @throws CCompatibilityException the kinds differ
/// @throws CDimensionException     the sizes differ
/// @throws CTypeException          UNINITIALIZED
bool Less(const Value& left, const Value& right);
bool LessEqual(const Value& left, const Value& right);
bool Greater(const Value& left, const Value& right);
bool GreaterEqual(const Value& left, const Value& right);

/// Logic of BOOLEANs. @throws CTypeException another kind
void And(Value& result, const Value& left, const Value& right);
void Or(Value& result, const Value& left, const Value& right);
void Not(Value& result, const Value& x);

}  // namespace corvath::math
