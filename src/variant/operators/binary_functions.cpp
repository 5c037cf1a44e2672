#include "variant/operators/binary_functions.h"

#include "foundation/closeness.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/signal_pair.h"
#include "variant/value/complex_division.h"

#include <cmath>
#include <string>

namespace corvath::math {

namespace {

using Complex = Value::Complex;

/// z^n for a whole n >= 0, which may be larger than any integer type holds.
template <class Number>
Number WholePower(Number z, double n) {
  Number result = 1.0;
  while (n > 0.0) {
    if (std::fmod(n, 2.0) == 1.0) result *= z;
    n = std::floor(n / 2.0);
    if (n > 0.0) z *= z;
  }
  return result;
}

Complex Modulo(const Complex& x, const Complex& y) {
  const Complex q = Quotient(x, y);
  return x - y * Complex(std::floor(q.real()), std::floor(q.imag()));
}

/// The dispatch that mod and pow share; `f` combines two numbers.
template <class F>
Value ByKinds(const Value& x, const Value& y, const std::string& name, F f) {
  if (x.IsScalar() && y.IsScalar()) return Value(f(x.GetScalar(), y.GetScalar()));
  if (y.IsScalar())
    return entrywise::Map(x, [f, b = y.GetScalar()](const Complex& a) { return f(a, b); });
  switch (x.GetKind()) {
    case Value::VECTOR:
      if (x.Size() != y.Size()) throw CDimensionException("Vector dimensions do not match.");
      return Value(entrywise::Zip(x.GetVector(), y.GetVector(), f));
    case Value::MATRIX:
      if (!entrywise::SameSize(x.GetMatrix(), y.GetMatrix()))
        throw CDimensionException("Matrix dimensions do not match.");
      return Value(entrywise::Zip(x.GetMatrix(), y.GetMatrix(), f));
    case Value::SIGNAL:
    case Value::XYDATA:
      if (x.Size1() != y.Size1()) throw CDimensionException("Number of channels does not match!");
      return CombineSignals(x, y, name, f);
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

/// Whether the kinds of mod(x, y) and pow(x, y) go together.
bool KindsMatch(const Value& x, const Value& y) {
  return y.IsScalar() || y.GetKind() == x.GetKind() || (x.HasTimeline() && y.HasTimeline());
}

Complex EntryProduct(const Complex& a, const Complex& b) {
  return a * b;
}

[[noreturn]] void ThrowUndefined(const std::string& x, const std::string& y) {
  throw CTypeException("Elementwise multiplication for " + x + " and " + y +
                       " is an undefined operation.");
}

/// Neither side is a SCALAR.
Value TimesCompound(const Value& x, const Value& y) {
  if (x.IsVector() && y.IsVector()) {
    if (x.Size() != y.Size()) throw CDimensionException("Vector dimensions do not match.");
    return Value(entrywise::Zip(x.GetVector(), y.GetVector(), EntryProduct));
  }
  if (x.IsVector() || y.IsVector()) ThrowUndefined(x.GetKindName(), y.GetKindName());
  if (y.IsMatrix()) {
    if (!entrywise::SameSize(x.GetMatrix(), y.GetMatrix()))
      throw CDimensionException("Matrix dimensions do not match.");
    Value::Matrix data = entrywise::Zip(x.GetMatrix(), y.GetMatrix(), EntryProduct);
    return x.IsMatrix() ? Value(std::move(data)) : entrywise::WithData(x, data);
  }
  if (x.IsMatrix()) {
    Value product;
    Multiply(product, y, x);
    return product;
  }
  if (x.Size1() != y.Size1()) throw CDimensionException("Number of channels does not match!");
  return CombineSignals(x, y, "Elementwise multiplication", EntryProduct);
}

}  // namespace

Complex Power(const Complex& z, const Complex& y) {
  if (!IsZero(y.imag())) return std::pow(z, y);
  const double exponent = y.real();
  if (std::abs(z.real()) < kEps && std::abs(z.imag()) < kEps) {
    if (exponent < 0.0) throw CComputationException("Error: 0^a is not defined for a < 0.");
    if (exponent > 0.0) return 0.0;
    if (exponent == 0.0) return 1.0;
  }
  for (const double whole : {std::ceil(exponent), std::floor(exponent)})
    if (IsZero(whole - exponent)) {
      // In complex arithmetic, infinity times a real number has a NaN beside it. A power that
      // overflows is infinity, its reciprocal 0, and the other way round.
      if (z.imag() == 0.0 && !std::isnan(z.real())) {
        const double power = WholePower(z.real(), std::abs(whole));
        return whole < 0.0 ? 1.0 / power : power;
      }
      const Complex power = WholePower(z, std::abs(whole));
      return whole < 0.0 ? Quotient(1.0, power) : power;
    }
  return std::pow(z, exponent);
}

void functions::mod(Value& result, const Value& x, const Value& y) {
  if (x.IsBoolean()) throw CTypeException("Invalid type BOOLEAN for mod-function.");
  if (!KindsMatch(x, y))
    throw CTypeException("Invalid type. Cannot divide by '" + y.GetKindName() +
                         "'. 2nd parameter has to be of type SCALAR.");
  result = ByKinds(x, y, "mod", Modulo);
}

void functions::pow(Value& result, const Value& x, const Value& y) {
  if (x.IsBoolean() || y.IsBoolean())
    throw CTypeException("Invalid type BOOLEAN for function pow.");
  if (!KindsMatch(x, y))
    throw CTypeException("Invalid type. Cannot perform pow('" + x.GetKindName() + "','" +
                         y.GetKindName() +
                         "'). 2nd parameter has to be of same type or of type SCALAR.");
  result = ByKinds(x, y, "pow", Power);
}

void functions::times(Value& result, const Value& x, const Value& y) {
  if (x.IsBoolean() || y.IsBoolean())
    throw CTypeException("Invalid type BOOLEAN for elementwise multiplication.");
  if (x.IsUninitialized() || y.IsUninitialized()) throw CTypeException(entrywise::kInvalidKind);
  if (x.IsScalar() || y.IsScalar())
    Multiply(result, x, y);
  else
    result = TimesCompound(x, y);
}

}  // namespace corvath::math
