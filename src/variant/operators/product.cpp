#include "variant/operators/arithmetic.h"
#include "variant/operators/entrywise.h"
#include "variant/operators/matrix_product.h"
#include "variant/signals/signal_pair.h"
#include "variant/value/limits.h"

namespace corvath::math {

namespace {

using Complex = Value::Complex;

/// a + b * c into a. Entries of c are added row by row, so that all loops run along memory.
void AddScaledRow(Complex* a, const Complex& b, const Complex* c, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) a[i] += b * c[i];
}

}  // namespace

Complex Product(const Value::Vector& a, const Value::Vector& b) {
  Complex sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a(i) * b(i);
  return sum;
}

Value::Vector Product(const Value::Vector& a, const Value::Matrix& b) {
  Value::Vector result(b.size2(), Complex());
  for (std::size_t k = 0; k < a.size(); ++k)
    AddScaledRow(result.data().begin(), a(k), b.data().begin() + k * b.size2(), b.size2());
  return result;
}

Value::Vector Product(const Value::Matrix& a, const Value::Vector& b) {
  Value::Vector result(a.size1(), Complex());
  for (std::size_t i = 0; i < a.size1(); ++i)
    for (std::size_t k = 0; k < a.size2(); ++k) result(i) += a(i, k) * b(k);
  return result;
}

Value::Matrix Product(const Value::Matrix& a, const Value::Matrix& b) {
  CheckEntries(a.size1(), b.size2());
  Value::Matrix result(a.size1(), b.size2(), Complex());
  Complex* row = result.data().begin();
  for (std::size_t i = 0; i < a.size1(); ++i, row += b.size2())
    for (std::size_t k = 0; k < a.size2(); ++k)
      AddScaledRow(row, a(i, k), b.data().begin() + k * b.size2(), b.size2());
  return result;
}

namespace {

void Require(bool fits, const char* text) {
  if (!fits) throw CDimensionException(text);
}

constexpr const char* kSizes = "Dimensions do not match.";

Value VectorTimes(const Value& left, const Value& right) {
  const Value::Vector& a = left.GetVector();
  switch (right.GetKind()) {
    case Value::VECTOR:
      Require(a.size() == right.Size(), "Vector dimensions do not match.");
      return Value(Product(a, right.GetVector()));
    case Value::MATRIX:
      Require(a.size() == right.Size1(), "Vector and Matrix dimensions do not match.");
      return Value(Product(a, right.GetMatrix()));
    default:
      throw CTypeException(right.GetKindName() + " * VECTOR is an undefined operation.");
  }
}

Value MatrixTimes(const Value& left, const Value& right) {
  const Value::Matrix& a = left.GetMatrix();
  switch (right.GetKind()) {
    case Value::VECTOR:
      Require(a.size2() == right.Size(), "Matrix and Vector dimensions do not match.");
      return Value(Product(a, right.GetVector()));
    case Value::MATRIX:
      Require(a.size2() == right.Size1(), "Matrix dimensions do not match.");
      return Value(Product(a, right.GetMatrix()));
    default: {
      Require(a.size2() == right.Size1() && (right.IsSignal() || a.size1() == 1), kSizes);
      Value::Matrix data = Product(a, right.GetMatrix());
      return entrywise::WithData(right, data);
    }
  }
}

Value SignalTimes(const Value& left, const Value& right) {
  switch (right.GetKind()) {
    case Value::VECTOR:
      throw CTypeException("VECTOR * " + left.GetKindName() + " is an undefined operation.");
    case Value::MATRIX: {
      Require(left.Size2() == right.Size1() && left.GetVector().size() == right.Size2(), kSizes);
      Value::Matrix data = Product(left.GetMatrix(), right.GetMatrix());
      return entrywise::WithData(left, data);
    }
    default:
      Require(left.Size1() == right.Size1(), "Number of channels does not match!");
      return CombineSignals(left, right, "*",
                            [](const Complex& a, const Complex& b) { return a * b; });
  }
}

Value Times(const Value& left, const Value& right) {
  if (left.IsScalar() && right.IsScalar()) return Value(left.GetScalar() * right.GetScalar());
  if (left.IsBoolean() || right.IsBoolean())
    throw CTypeException("Invalid type BOOLEAN for operation: *.");
  if (left.IsUninitialized() || right.IsUninitialized())
    throw CTypeException(entrywise::kInvalidKind);
  if (left.IsScalar())
    return entrywise::Map(right, [a = left.GetScalar()](const Complex& b) { return a * b; });
  if (right.IsScalar())
    return entrywise::Map(left, [b = right.GetScalar()](const Complex& a) { return a * b; });
  if (left.IsVector()) return VectorTimes(left, right);
  if (left.IsMatrix()) return MatrixTimes(left, right);
  return SignalTimes(left, right);
}

}  // namespace

void Multiply(Value& result, const Value& left, const Value& right) {
  result = Times(left, right);
}

}  // namespace corvath::math
