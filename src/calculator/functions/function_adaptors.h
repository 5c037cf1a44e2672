#pragma once

#include "calculator/function_call.h"
#include "calculator/function_table.h"

#include <cstdint>
#include <initializer_list>

/// Entries of the function table made of functions of the value type. Internal.
namespace corvath::calculator {

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

/// A function of two matrices whose multiplications `Work` tells.
template <void (*Of)(math::Value&, const math::Value&, const math::Value&),
          std::uint64_t (*Work)(const math::Value&, const math::Value&)>
void OfMatrices(FunctionCall& call, math::Value& result) {
  const math::Value a = call.Evaluate(0);
  math::Value storage;
  const math::Value& b = call.Borrow(1, storage);
  if (!a.IsUninitialized() && !b.IsUninitialized()) call.CountMultiplications(Work(a, b));
  Of(result, a, b);
}

struct UnaryEntry {
  const wchar_t* name;
  void (*run)(FunctionCall&, math::Value&);
};

/// Functions of one argument.
inline void AddUnary(FunctionTable& table, FunctionGroup group,
                     std::initializer_list<UnaryEntry> entries) {
  for (const auto& [name, run] : entries) table.Add(group, {name}, {1}, run);
}

}  // namespace corvath::calculator
