#pragma once

#include "foundation/constants.h"
#include "variant/value/variant.h"

#include <initializer_list>

namespace corvath::calculator {

/// A number or truth value that texts name.
struct Constant {
  const wchar_t* name;  ///< upper case
  math::Value value;
  const wchar_t* use;  ///< what it means, for people
};

/// Calls `add(constant)` for each of them.
template <class Add>
void ForEachConstant(Add add) {
  add(Constant{L"PI", math::Value(math::kPi), L"circumference of a circle over its diameter"});
  add(Constant{L"E", math::Value(2.718281828459045), L"base of the natural logarithm"});
  add(Constant{L"TRUE", math::Value(true), L"truth value"});
  add(Constant{L"FALSE", math::Value(false), L"truth value"});
  add(Constant{L"I", math::Value(0.0, 1.0), L"imaginary unit"});
  const auto numbers = [&](const wchar_t* use, std::initializer_list<const wchar_t*> names) {
    double value = 0.0;
    for (const wchar_t* name : names) add(Constant{name, math::Value(value++), use});
  };
  numbers(L"interpolation type", {L"SPLINE", L"LINEAR", L"QUAD"});
  numbers(L"extrapolation or start condition", {L"ZERO", L"CONSTANT"});
  add(Constant{L"MIRROR", math::Value(2.0), L"extrapolation"});
  add(Constant{L"REVERSE_MIRROR", math::Value(3.0), L"extrapolation"});
  add(Constant{L"TANGENTIAL", math::Value(4.0), L"extrapolation"});
  numbers(L"direction of derive, integrate", {L"FORWARD", L"BACKWARD"});
  numbers(L"distribution of rand",
          {L"UNIFORM", L"NORMAL", L"LOGNORMAL", L"TRIANGLE", L"CAUCHY", L"EXPONENTIAL"});
  numbers(L"filter type", {L"LOWPASS", L"HIGHPASS", L"BANDPASS", L"BANDSTOP"});
}

}  // namespace corvath::calculator
