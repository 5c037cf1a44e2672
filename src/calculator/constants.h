#pragma once

#include "variant/variant.h"

namespace corvath::calculator {

/// A number or truth value that texts name.
struct Constant {
  const wchar_t* name;  ///< upper case
  math::Value value;
};

/// Calls `add(constant)` for each of them.
template <class Add>
void ForEachConstant(Add add) {
  const auto number = [&](const wchar_t* name, double value) {
    add(Constant{name, math::Value(value)});
  };
  const auto numbers = [&](std::initializer_list<const wchar_t*> names) {
    double value = 0.0;
    for (const wchar_t* name : names) number(name, value++);
  };
  number(L"PI", 3.141592653589793);
  number(L"E", 2.718281828459045);
  add(Constant{L"TRUE", math::Value(true)});
  add(Constant{L"FALSE", math::Value(false)});
  add(Constant{L"I", math::Value(0.0, 1.0)});
  numbers({L"SPLINE", L"LINEAR", L"QUAD"});                                      // interpolation
  numbers({L"ZERO", L"CONSTANT", L"MIRROR", L"REVERSE_MIRROR", L"TANGENTIAL"});  // end conditions
  numbers({L"FORWARD", L"BACKWARD"});  // direction of derive and integrate
  numbers({L"UNIFORM", L"NORMAL", L"LOGNORMAL", L"TRIANGLE", L"CAUCHY", L"EXPONENTIAL"});  // rand
  numbers({L"LOWPASS", L"HIGHPASS", L"BANDPASS", L"BANDSTOP"});  // filters
}

}  // namespace corvath::calculator
