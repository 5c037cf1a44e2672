#include "variant/arithmetic.h"

#include "foundation/math_exception.h"

#include <cstddef>
#include <functional>
#include <utility>

namespace corvath::math {

namespace {

using Complex = Value::Complex;

/// The elements of an operand: a SCALAR stands still, so that it broadcasts.
struct Elements {
  const Complex* first;
  std::size_t stride;
  const Complex& operator[](std::size_t i) const { return first[i * stride]; }
};

Elements ElementsOf(const Value& value) {
  if (value.IsScalar()) return {&value.GetScalar(), 0};
  if (value.IsVector()) return {value.GetVector().data().begin(), 1};
  return {value.GetMatrix().data().begin(), 1};
}

bool IsOperand(const Value& value) {
  return value.IsScalar() || value.IsVector() || value.IsMatrix();
}

/// Elementwise combination of operands of one kind, or of a SCALAR with any.
template <class Operation>
Value Combine(const Value& left, const Value& right, char symbol, Operation operation) {
  if (left.IsBoolean() || right.IsBoolean())
    throw CTypeException(std::string("Invalid type BOOLEAN for operation ") + symbol + ".");
  if (!IsOperand(left))
    throw CTypeException(std::string("Input object has invalid datatype for operation ") + symbol +
                         ".");
  if (!IsOperand(right) ||
      (!left.IsScalar() && !right.IsScalar() && left.GetKind() != right.GetKind()))
    throw CTypeException("Type of second Input object not compatible with first.");
  if (left.IsScalar() && right.IsScalar())
    return Value(operation(left.GetScalar(), right.GetScalar()));

  const Value& shape = left.IsScalar() ? right : left;
  const bool broadcasts = left.IsScalar() || right.IsScalar();
  const Elements a = ElementsOf(left);
  const Elements b = ElementsOf(right);
  if (shape.IsVector()) {
    if (!broadcasts && left.Size() != right.Size())
      throw CDimensionException("Vector dimensions do not match.");
    Value::Vector vector(shape.Size());
    for (std::size_t i = 0; i < vector.size(); ++i) vector[i] = operation(a[i], b[i]);
    return Value(std::move(vector));
  }
  if (!broadcasts && (left.Size1() != right.Size1() || left.Size2() != right.Size2()))
    throw CDimensionException("Matrix dimensions do not match.");
  Value::Matrix matrix(shape.Size1(), shape.Size2());
  for (std::size_t i = 0; i < shape.Size(); ++i) matrix.data()[i] = operation(a[i], b[i]);
  return Value(std::move(matrix));
}

}  // namespace

void Subtract(Value& result, const Value& left, const Value& right) {
  result = Combine(left, right, '-', std::minus<Complex>());
}

}  // namespace corvath::math
