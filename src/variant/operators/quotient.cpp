#include "variant/operators/arithmetic.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/signal_pair.h"
#include "variant/value/complex_division.h"

namespace corvath::math {

namespace {

using Complex = Value::Complex;

/// Quotient as an object, so that loops inline it.
constexpr auto kQuotient = [](const Complex& a, const Complex& b) { return Quotient(a, b); };

[[noreturn]] void ThrowUndefined(const Value& left, const Value& right) {
  throw CVariantException("No Operator '/' definied for " + left.GetKindName() + " / " +
                          right.GetKindName() + ".");
}

/// Neither side is a SCALAR; unless the right side is a signal, both are of one kind.
Value DivideCompound(const Value& left, const Value& right) {
  switch (left.GetKind()) {
    case Value::VECTOR:
      if (!right.IsVector()) ThrowUndefined(left, right);
      if (left.Size() != right.Size()) throw CDimensionException("Vector dimensions do not match.");
      return Value(entrywise::Zip(left.GetVector(), right.GetVector(), kQuotient));
    case Value::MATRIX:
      if (!right.IsMatrix()) ThrowUndefined(left, right);
      if (!entrywise::SameSize(left.GetMatrix(), right.GetMatrix()))
        throw CDimensionException("Matrix dimensions do not match.");
      return Value(entrywise::Zip(left.GetMatrix(), right.GetMatrix(), kQuotient));
    case Value::SIGNAL:
    case Value::XYDATA:
      if (left.Size1() != right.Size1())
        throw CDimensionException("Inputs need same number of channels");
      return CombineSignals(left, right, "/", kQuotient);
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

Value DivideValues(const Value& left, const Value& right) {
  if (left.IsScalar() && right.IsScalar())
    return Value(Quotient(left.GetScalar(), right.GetScalar()));
  if (left.IsBoolean() || right.IsBoolean())
    throw CTypeException("Invalid type BOOLEAN for operation: /.");
  if (!right.IsScalar() && !right.HasTimeline() && right.GetKind() != left.GetKind())
    throw CTypeException("Invalid type. Cannot divide by '" + right.GetKindName() +
                         "'. 2nd parameter has to be of same type or of type SCALAR, XYDATA or "
                         "SIGNAL.");
  if (right.IsScalar())
    return entrywise::Map(left,
                          [b = right.GetScalar()](const Complex& a) { return Quotient(a, b); });
  if (left.IsScalar())
    return entrywise::Map(right,
                          [a = left.GetScalar()](const Complex& b) { return Quotient(a, b); });
  return DivideCompound(left, right);
}

}  // namespace

void Divide(Value& result, const Value& left, const Value& right) {
  result = DivideValues(left, right);
}

}  // namespace corvath::math
