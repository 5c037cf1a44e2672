#pragma once

#include "calculator/function_call.h"

/// Entries of the function table made of functions of the value type. Internal.
namespace corvath::calculator {

/// Functions of one and of two arguments, which are evaluated from left to right.
template <void (*Of)(math::Value&, const math::Value&)>
void Unary(FunctionCall& call, math::Value& result) {
  math::Value storage;
  Of(result, call.Borrow(0, storage));
}

template <void (*Of)(math::Value&, const math::Value&, const math::Value&)>
void Binary(FunctionCall& call, math::Value& result) {
  const math::Value first = call.Evaluate(0);
  math::Value storage;
  Of(result, first, call.Borrow(1, storage));
}

}  // namespace corvath::calculator
