#pragma once

#include "exchange/scalar_expression.h"

#include <string>
#include <vector>

namespace corvath::exchange {

/// Writes expressions in a language with the infix operators of C; what differs is overridden.
class ExpressionText {
 public:
  virtual ~ExpressionText() = default;
  std::string Write(const Expression& expression);

 protected:
  virtual std::string Input(std::size_t position) = 0;
  virtual std::string Response(std::size_t position) = 0;
  virtual std::string Criterion(std::size_t position) = 0;
  /// Name of a function, also of quotient and power, which are no infix operators: they are NaN
  /// where the library leaves the real numbers.
  virtual std::string Function(Expression::Operator op) = 0;
  /// The smallest or largest of several numbers.
  virtual std::string Extreme(Expression::Operator op, const std::vector<std::string>& numbers) = 0;

  static std::string Join(const std::vector<std::string>& texts, const char* between);
};

}  // namespace corvath::exchange
