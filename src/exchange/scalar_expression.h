#pragma once

#include <cstddef>
#include <vector>

namespace corvath::exchange {

/// Arithmetic on real numbers: the value of a criterion as a tree. A value that leaves the real
/// numbers (the root of a negative number, a division by 0) is NaN.
struct Expression {
  enum class Kind {
    kNumber,
    kInput,      ///< by position among the inputs of the project
    kResponse,   ///< among the responses that are described
    kCriterion,  ///< among the criteria that are described; none refers to itself in a circle
    kOperator    ///< of `arguments`
  };
  enum class Operator {
    kAdd,       ///< of any number of arguments, from the first to the last
    kSubtract,  ///< of two
    kMultiply,
    kDivide,
    kPower,
    kNegate,  ///< of one; so are the following ones
    kAbs,
    kSqrt,
    kExp,
    kLn,
    kLog10,
    kSin,
    kCos,
    kTan,
    kAsin,
    kAcos,
    kAtan,
    kSinh,
    kCosh,
    kTanh,
    kFloor,
    kCeil,
    kMin,  ///< of any number
    kMax
  };

  Kind kind = Kind::kNumber;
  double number = 0.0;
  std::size_t position = 0;
  Operator op = Operator::kAdd;
  std::vector<Expression> arguments;
};

/// "+", "sqrt", "max": what the JSON form calls an operator.
const char* GetOperatorName(Expression::Operator op);

}  // namespace corvath::exchange
