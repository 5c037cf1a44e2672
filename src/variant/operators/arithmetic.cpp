#include "variant/operators/arithmetic.h"

#include "variant/operators/entrywise.h"
#include "variant/signals/signal_pair.h"

#include <string>

namespace corvath::math {

namespace {

using Complex = Value::Complex;

struct Sum {
  static constexpr const char* kSign = "+";
  static constexpr const char* kSignalMatrixText = "Matrix and Signal dimensions do not match.";
  Complex operator()(const Complex& a, const Complex& b) const { return a + b; }
};

struct Difference {
  static constexpr const char* kSign = "-";
  static constexpr const char* kSignalMatrixText = "Matrix dimensions do not match.";
  Complex operator()(const Complex& a, const Complex& b) const { return a - b; }
};

[[noreturn]] void ThrowIncompatible() {
  throw CTypeException("Type of second Input object not compatible with first.");
}

/// Entry i of `vector` with every sample of channel i.
template <class F>
Value WithChannels(const Value& signal, const Value& vector, F f) {
  const Value::Matrix& data = signal.GetMatrix();
  if (vector.Size() != data.size1())
    throw CDimensionException("Vector dimension does not match dimension of Signal.");
  Value::Matrix result(data.size1(), data.size2());
  for (std::size_t channel = 0; channel < data.size1(); ++channel)
    for (std::size_t sample = 0; sample < data.size2(); ++sample)
      result(channel, sample) = f(data(channel, sample), vector.GetVector()(channel));
  return entrywise::WithData(signal, result);
}

template <class Op>
Value VectorWith(const Value& left, const Value& right, Op op) {
  switch (right.GetKind()) {
    case Value::VECTOR:
      if (left.Size() != right.Size()) throw CDimensionException("Vector dimensions do not match.");
      return Value(entrywise::Zip(left.GetVector(), right.GetVector(), op));
    case Value::SIGNAL:
      return WithChannels(right, left,
                          [op](const Complex& y, const Complex& v) { return op(v, y); });
    default:
      ThrowIncompatible();
  }
}

template <class Op>
Value MatrixWith(const Value& left, const Value& right, Op op) {
  if (!right.IsMatrix() && !right.HasTimeline()) ThrowIncompatible();
  if (!entrywise::SameSize(left.GetMatrix(), right.GetMatrix()))
    throw CDimensionException("Matrix dimensions do not match.");
  Value::Matrix data = entrywise::Zip(left.GetMatrix(), right.GetMatrix(), op);
  return right.IsMatrix() ? Value(std::move(data)) : entrywise::WithData(right, data);
}

template <class Op>
Value SignalWith(const Value& left, const Value& right, Op op) {
  switch (right.GetKind()) {
    case Value::VECTOR:
      if (left.IsXYData()) ThrowIncompatible();
      return WithChannels(left, right, op);
    case Value::MATRIX: {
      if (!entrywise::SameSize(left.GetMatrix(), right.GetMatrix()))
        throw CDimensionException(Op::kSignalMatrixText);
      Value::Matrix data = entrywise::Zip(left.GetMatrix(), right.GetMatrix(), op);
      return entrywise::WithData(left, data);
    }
    case Value::SIGNAL:
    case Value::XYDATA:
      if (left.Size1() != right.Size1())
        throw CDimensionException("Number of channels does not match!");
      return CombineSignals(left, right, Op::kSign, op);
    default:
      ThrowIncompatible();
  }
}

template <class Op>
Value Combine(const Value& left, const Value& right, Op op) {
  if (left.IsScalar() && right.IsScalar()) return Value(op(left.GetScalar(), right.GetScalar()));
  if (left.IsBoolean() || right.IsBoolean())
    throw CTypeException(std::string("Invalid type BOOLEAN for operation ") + Op::kSign + ".");
  if (left.IsUninitialized())
    throw CTypeException(std::string("Input object has invalid datatype for operation ") +
                         Op::kSign + ".");
  if (right.IsUninitialized()) ThrowIncompatible();
  if (left.IsScalar())
    return entrywise::Map(right, [op, a = left.GetScalar()](const Complex& b) { return op(a, b); });
  if (right.IsScalar())
    return entrywise::Map(left, [op, b = right.GetScalar()](const Complex& a) { return op(a, b); });
  if (left.IsVector()) return VectorWith(left, right, op);
  if (left.IsMatrix()) return MatrixWith(left, right, op);
  return SignalWith(left, right, op);
}

}  // namespace

void Add(Value& result, const Value& left, const Value& right) {
  result = Combine(left, right, Sum());
}

void Subtract(Value& result, const Value& left, const Value& right) {
  result = Combine(left, right, Difference());
}

}  // namespace corvath::math
