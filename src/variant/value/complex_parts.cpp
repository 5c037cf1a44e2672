#include "variant/value/complex_parts.h"

#include "variant/operators/entrywise.h"
#include "variant/signals/signal_pair.h"

#include <cmath>
#include <string>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;
using Vector = Value::Vector;
using Matrix = Value::Matrix;

void RefuseBoolean(bool is_boolean, const char* name) {
  if (is_boolean)
    throw CTypeException(std::string("Invalid type BOOLEAN for ") + name + "-function.");
}

template <class F>
void Apply(Value& result, const Value& x, const char* name, F f) {
  RefuseBoolean(x.IsBoolean(), name);
  result = entrywise::Map(x, f);
}

Complex FromParts(const Complex& a, const Complex& b) {
  return {a.real(), b.real()};
}

Complex ArcTangent2(const Complex& y, const Complex& x) {
  return std::atan2(y.real(), x.real());
}

/// Not std::polar, which leaves a negative magnitude undefined.
Complex FromPolar(const Complex& magnitude, const Complex& phase) {
  return {magnitude.real() * std::cos(phase.real()), magnitude.real() * std::sin(phase.real())};
}

Matrix MagnitudeAndPhase(const Complex* entries, std::size_t rows, std::size_t columns) {
  Matrix polar(2 * rows, columns);
  for (std::size_t row = 0; row < rows; ++row)
    for (std::size_t column = 0; column < columns; ++column) {
      const Complex& z = entries[row * columns + column];
      polar(2 * row, column) = std::abs(z);
      polar(2 * row + 1, column) = std::arg(z);
    }
  return polar;
}

}  // namespace

void conj(Value& result, const Value& x) {
  Apply(result, x, "conj", [](const Complex& z) { return std::conj(z); });
}
void real(Value& result, const Value& x) {
  Apply(result, x, "real", [](const Complex& z) { return Complex(z.real()); });
}
void imag(Value& result, const Value& x) {
  Apply(result, x, "imag", [](const Complex& z) { return Complex(z.imag()); });
}
void abs(Value& result, const Value& x) {
  Apply(result, x, "abs", [](const Complex& z) { return Complex(std::abs(z)); });
}
void arg(Value& result, const Value& x) {
  Apply(result, x, "arg", [](const Complex& z) { return Complex(std::arg(z)); });
}
void norm(Value& result, const Value& x) {
  Apply(result, x, "norm", [](const Complex& z) { return Complex(std::norm(z)); });
}

void sgn(Value& result, const Value& x) {
  if (!x.IsScalar())
    throw CTypeException(
        "Invalid type. Only type SCALAR allowed for signum-function. Matrix signum is not "
        "supported.");
  const Complex z = x.GetScalar();
  if (IsZero(z.imag()))
    result = Value(z.real() > 0.0 ? 1.0 : z.real() < 0.0 ? -1.0 : 0.0);
  else
    result = Value(z / std::abs(z));  // |z| is above 2^-26 here
}

void cplx(Value& result, const Value& a, const Value& b) {
  RefuseBoolean(a.IsBoolean() || b.IsBoolean(), "cplx");
  const bool signals = a.HasTimeline() && b.HasTimeline();
  if (a.GetKind() != b.GetKind() && !signals)
    throw CCompatibilityException("Cannot put '" + a.GetKindName() + "' and '" + b.GetKindName() +
                                  "' in one complex number: Incompatible types.");
  if (a.IsComplex() || b.IsComplex()) throw CDomainException("Imaginary part has to be zero.");
  if (signals) {
    if (a.Size1() != b.Size1()) throw CDimensionException("Number of channels does not match!");
    result = CombineSignals<CDomainException>(a, b, "cplx", FromParts);
    return;
  }
  switch (a.GetKind()) {
    case Value::SCALAR:
      result = Value(FromParts(a.GetScalar(), b.GetScalar()));
      break;
    case Value::VECTOR:
      if (a.Size() != b.Size())
        throw CDimensionException(
            "Both vectors must have the same dimension to become one complex vector. ");
      result = Value(entrywise::Zip(a.GetVector(), b.GetVector(), FromParts));
      break;
    case Value::MATRIX:
      if (!entrywise::SameSize(a.GetMatrix(), b.GetMatrix()))
        throw CDimensionException(
            "Both matrices must have the same dimension to become one complex matrix. ");
      result = Value(entrywise::Zip(a.GetMatrix(), b.GetMatrix(), FromParts));
      break;
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

void atan2(Value& result, const Value& y, const Value& x) {
  if (y.IsUninitialized() || x.IsUninitialized())
    throw CTypeException("Cannot handle UNINITIALIZED arguments in atan2(y,x)-function");
  for (const Value* v : {&y, &x})
    if (v->IsBoolean() || v->HasTimeline())
      throw CTypeException("Invalid data kind '" + v->GetKindName() + "' for atan2(y,x)-function.");
  if (y.IsComplex() || x.IsComplex())
    throw CTypeException("Complex number arguments not supported for atan2(y,x)-function.");
  if (y.GetKind() != x.GetKind())
    throw CTypeException("Arguments must be of same kind for atan2(y,x)-function.");
  if (y.Size1() != x.Size1() || y.Size2() != x.Size2())
    throw CDimensionException("Arguments must be of same dimension for atan2(y,x)-function.");
  if (y.IsScalar())
    result = Value(ArcTangent2(y.GetScalar(), x.GetScalar()));
  else if (y.IsVector())
    result = Value(entrywise::Zip(y.GetVector(), x.GetVector(), ArcTangent2));
  else
    result = Value(entrywise::Zip(y.GetMatrix(), x.GetMatrix(), ArcTangent2));
}

void atan2(Value& result, const Value& x) {
  if (x.IsBoolean()) throw CTypeException("Invalid type BOOLEAN for atan2(yx)-function.");
  if (x.IsUninitialized()) throw CTypeException(entrywise::kInvalidKind);
  if (x.IsVector() || x.IsMatrix())
    throw CTypeException("Invalid data kind '" + x.GetKindName() +
                         "' for single argument atan2(yx)-function.");
  if (x.IsScalar()) {
    result = Value(std::atan2(x.GetScalar().imag(), x.GetScalar().real()));
    return;
  }
  if (x.IsComplex())
    throw CTypeException(x.GetKindName() +
                         " argument based on complex numbers not supported for "
                         "atan2(yx)-function.");
  Matrix angles(x.Size1(), x.Size2());
  for (std::size_t channel = 0; channel < angles.size1(); ++channel)
    for (std::size_t sample = 0; sample < angles.size2(); ++sample)
      angles(channel, sample) = ArcTangent2(x.GetMatrix()(channel, sample), x.GetVector()(sample));
  result = entrywise::WithData(x, angles);
}

void cart2pol(Value& result, const Value& x) {
  RefuseBoolean(x.IsBoolean(), "cart2pol");
  switch (x.GetKind()) {
    case Value::SCALAR: {
      Vector polar(2);
      polar(0) = std::abs(x.GetScalar());
      polar(1) = std::arg(x.GetScalar());
      result = Value(std::move(polar));
      break;
    }
    case Value::VECTOR:
      result = Value(MagnitudeAndPhase(x.GetVector().data().begin(), 1, x.Size()));
      break;
    case Value::MATRIX:
      result = Value(MagnitudeAndPhase(x.GetMatrix().data().begin(), x.Size1(), x.Size2()));
      break;
    case Value::SIGNAL:
    case Value::XYDATA: {
      Matrix polar = MagnitudeAndPhase(x.GetMatrix().data().begin(), x.Size1(), x.Size2());
      Value signal = entrywise::WithData(x, polar);
      signal.SetKind(Value::SIGNAL);  // two channels are no XYDATA
      result = std::move(signal);
      break;
    }
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

void pol2cart(Value& result, const Value& x) {
  if (x.IsBoolean() || x.IsScalar() || x.IsXYData())
    throw CTypeException("Invalid type " + x.GetKindName() + " for pol2cart-function.");
  if (x.IsUninitialized()) throw CTypeException(entrywise::kInvalidKind);
  if (x.IsComplex()) throw CTypeException("Real input object expected.");
  if (x.IsVector()) {
    const Vector& polar = x.GetVector();
    if (polar.size() % 2 != 0) throw CDimensionException("Size of vector must be even.");
    Vector numbers(polar.size() / 2);
    for (std::size_t k = 0; k < numbers.size(); ++k)
      numbers(k) = FromPolar(polar(2 * k), polar(2 * k + 1));
    result = numbers.size() == 1 ? Value(numbers(0)) : Value(std::move(numbers));
    return;
  }
  const Matrix& polar = x.GetMatrix();
  if (polar.size1() % 2 != 0) throw CDimensionException("Number of rows must be even.");
  Matrix numbers(polar.size1() / 2, polar.size2());
  for (std::size_t k = 0; k < numbers.size1(); ++k)
    for (std::size_t column = 0; column < numbers.size2(); ++column)
      numbers(k, column) = FromPolar(polar(2 * k, column), polar(2 * k + 1, column));
  result = x.IsMatrix() ? Value(std::move(numbers)) : entrywise::WithData(x, numbers);
}

}  // namespace corvath::math::functions
