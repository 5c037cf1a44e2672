#include "variant/ordering.h"

#include "foundation/math_exception.h"

#include <algorithm>
#include <functional>

namespace corvath::math {

namespace {

using Complex = Value::Complex;

template <class Relation>
bool HoldsForAll(const Complex* left, const Complex* right, std::size_t size, Relation relation) {
  return std::equal(left, left + size, right, [&](const Complex& a, const Complex& b) {
    return relation(a.real(), b.real());
  });
}

template <class Relation>
bool Compare(const Value& left, const Value& right, const std::string& symbol, Relation relation) {
  if (left.IsComplex() || right.IsComplex())
    throw CVariantException("Compare operation not allowed for Variants with complex values.");
  if (left.HasTimeline() || right.HasTimeline())
    throw CVariantException("No operator " + symbol + " for signal and xydata implemented yet.");
  if (left.GetKind() != right.GetKind())
    throw CCompatibilityException("Cannot perform '" + left.GetKindName() + "' - '" +
                                  right.GetKindName() + "': Incompatible types.");
  switch (left.GetKind()) {
    case Value::BOOLEAN:
      return relation(left.GetBoolean(), right.GetBoolean());
    case Value::SCALAR:
      return relation(left.GetScalar().real(), right.GetScalar().real());
    case Value::VECTOR: {
      const Value::Vector& a = left.GetVector();
      const Value::Vector& b = right.GetVector();
      if (a.size() != b.size()) throw CDimensionException("Vector dimensions do not match.");
      return HoldsForAll(a.data().begin(), b.data().begin(), a.size(), relation);
    }
    case Value::MATRIX: {
      const Value::Matrix& a = left.GetMatrix();
      const Value::Matrix& b = right.GetMatrix();
      if (a.size1() != b.size1() || a.size2() != b.size2())
        throw CDimensionException("Matrix dimensions do not match.");
      return HoldsForAll(a.data().begin(), b.data().begin(), a.data().size(), relation);
    }
    default:
      throw CTypeException("Input object has invalid datatype.");
  }
}

}  // namespace

bool Less(const Value& left, const Value& right) {
  return Compare(left, right, "<", std::less<>());
}
bool LessEqual(const Value& left, const Value& right) {
  return Compare(left, right, "<=", std::less_equal<>());
}
bool Greater(const Value& left, const Value& right) {
  return Compare(left, right, ">", std::greater<>());
}
bool GreaterEqual(const Value& left, const Value& right) {
  return Compare(left, right, ">=", std::greater_equal<>());
}

}  // namespace corvath::math
