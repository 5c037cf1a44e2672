#include "variant/functions/ordering.h"

#include "variant/operators/entrywise.h"

#include <algorithm>
#include <functional>
#include <string>

namespace corvath::math {

namespace {

template <class Relation, class Array>
bool HoldsForAll(const Array& a, const Array& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& x, const auto& y) { return Relation()(x.real(), y.real()); });
}

template <class Relation>
bool Compare(const Value& left, const Value& right, const char* sign) {
  if (left.IsComplex() || right.IsComplex())
    throw CVariantException("Compare operation not allowed for Variants with complex values.");
  if (left.HasTimeline() || right.HasTimeline())
    throw CVariantException(std::string("No operator ") + sign +
                            " for signal and xydata implemented yet.");
  if (left.GetKind() != right.GetKind())
    throw CCompatibilityException("Cannot perform '" + left.GetKindName() + "' - '" +
                                  right.GetKindName() + "': Incompatible types.");
  switch (left.GetKind()) {
    case Value::BOOLEAN:
      return Relation()(left.GetBoolean(), right.GetBoolean());
    case Value::SCALAR:
      return Relation()(left.GetScalar().real(), right.GetScalar().real());
    case Value::VECTOR:
      if (left.Size() != right.Size()) throw CDimensionException("Vector dimensions do not match.");
      return HoldsForAll<Relation>(left.GetVector().data(), right.GetVector().data());
    case Value::MATRIX:
      if (!entrywise::SameSize(left.GetMatrix(), right.GetMatrix()))
        throw CDimensionException("Matrix dimensions do not match.");
      return HoldsForAll<Relation>(left.GetMatrix().data(), right.GetMatrix().data());
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

void RequireBoolean(bool holds, const char* operation) {
  if (!holds)
    throw CTypeException(std::string("Invalid type. Only BOOLEAN allowed for operation: ") +
                         operation + ".");
}

}  // namespace

bool Less(const Value& left, const Value& right) {
  return Compare<std::less<>>(left, right, "<");
}
bool LessEqual(const Value& left, const Value& right) {
  return Compare<std::less_equal<>>(left, right, "<=");
}
bool Greater(const Value& left, const Value& right) {
  return Compare<std::greater<>>(left, right, ">");
}
bool GreaterEqual(const Value& left, const Value& right) {
  return Compare<std::greater_equal<>>(left, right, ">=");
}

void And(Value& result, const Value& left, const Value& right) {
  RequireBoolean(left.IsBoolean() && right.IsBoolean(), "and");
  result = Value(left.GetBoolean() && right.GetBoolean());
}

void Or(Value& result, const Value& left, const Value& right) {
  RequireBoolean(left.IsBoolean() && right.IsBoolean(), "or");
  result = Value(left.GetBoolean() || right.GetBoolean());
}

void Not(Value& result, const Value& x) {
  RequireBoolean(x.IsBoolean(), "not");
  result = Value(!x.GetBoolean());
}

}  // namespace corvath::math
