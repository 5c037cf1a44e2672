#include "exchange/scalar_expression.h"

#include <stdexcept>

namespace corvath::exchange {

const char* GetOperatorName(Expression::Operator op) {
  // In the order of the operators.
  static constexpr const char* kNames[] = {"+",    "-",    "*",     "/",    "^",    "negate",
                                           "abs",  "sqrt", "exp",   "ln",   "log",  "sin",
                                           "cos",  "tan",  "asin",  "acos", "atan", "sinh",
                                           "cosh", "tanh", "floor", "ceil", "min",  "max"};
  const auto position = static_cast<std::size_t>(op);
  if (position >= std::size(kNames)) throw std::logic_error("GetOperatorName: unknown operator");
  return kNames[position];
}

}  // namespace corvath::exchange
