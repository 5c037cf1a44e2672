#pragma once

#include "variant/value/variant.h"

namespace corvath::math {

/// An ascending signal on the equidistant axis of its SmallestStep by InterpolateByStep, for the
/// methods that need one step for all intervals; one that has it already is returned as it is.
/// @throws CVariantException and its children as IsEquidistant, SmallestStep, InterpolateByStep do
Value Equidistant(Value ascending, int degree, double d0, double d1);

}  // namespace corvath::math
