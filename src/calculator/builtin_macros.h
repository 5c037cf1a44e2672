#pragma once

#include "calculator/macro.h"

namespace corvath::calculator {

/// The macros that every calculator knows: measures of signals. By their names a parameter __c or
/// __c2 is a signal, __r or __r2 a limit of a range or a position, and __i an integer.
const CalculatorTypeTraits::Macros& GetBuiltinMacros();

}  // namespace corvath::calculator
