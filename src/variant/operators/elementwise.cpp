#include "variant/operators/elementwise.h"

#include "foundation/constants.h"
#include "variant/operators/entrywise.h"

#include <boost/math/complex.hpp>

#include <cmath>
#include <limits>
#include <string>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;

constexpr double kLog10OfE = 0.4342944819032518;
constexpr double kInf = std::numeric_limits<double>::infinity();

/// `f` of every number; `name` is what the message about a BOOLEAN calls the function.
template <class F>
void Apply(Value& result, const Value& x, const char* name, F f) {
  if (x.IsBoolean())
    throw CTypeException(std::string("Invalid type BOOLEAN for ") + name + "-function.");
  result = entrywise::Map(x, f);
}

/// -i tanh(i z)
Complex Tangent(const Complex& z) {
  if (IsZero(std::fmod(z.real() - kPi / 2, kPi)))
    throw CDomainException("Input to close to Pi/2.0 .");
  const Complex t = std::tanh(Complex(-z.imag(), z.real()));
  return {t.imag(), -t.real()};
}

Complex ArcTangent(const Complex& z) {
  if (z.real() == 0.0 && std::abs(z.imag()) == 1.0) return {0.0, z.imag() * kInf};
  return boost::math::atan(z);
}

/// i asin(-i z)
Complex AreaSine(const Complex& z) {
  const Complex a = boost::math::asin(Complex(z.imag(), -z.real()));
  return {-a.imag(), a.real()};
}

double RoundTo(double x, double scale) {
  return std::trunc(x * scale + (x < 0.0 ? -0.5 : 0.5)) / scale;
}

}  // namespace

void sin(Value& result, const Value& x) {
  Apply(result, x, "sine", [](const Complex& z) { return std::sin(z); });
}
void cos(Value& result, const Value& x) {
  Apply(result, x, "cosine", [](const Complex& z) { return std::cos(z); });
}
void tan(Value& result, const Value& x) {
  Apply(result, x, "tangens", Tangent);
}
void asin(Value& result, const Value& x) {
  Apply(result, x, "arcsine", [](const Complex& z) { return boost::math::asin(z); });
}
void acos(Value& result, const Value& x) {
  Apply(result, x, "arccosine", [](const Complex& z) { return boost::math::acos(z); });
}
void atan(Value& result, const Value& x) {
  Apply(result, x, "arctangens", ArcTangent);
}
void sinh(Value& result, const Value& x) {
  Apply(result, x, "hyperbolic-sine", [](const Complex& z) { return std::sinh(z); });
}
void cosh(Value& result, const Value& x) {
  Apply(result, x, "hyperbolic-cosine", [](const Complex& z) { return std::cosh(z); });
}
void tanh(Value& result, const Value& x) {
  Apply(result, x, "hyperbolic-tangens", [](const Complex& z) { return std::tanh(z); });
}
void asinh(Value& result, const Value& x) {
  Apply(result, x, "hyperbolic-arcsine", AreaSine);
}
void acosh(Value& result, const Value& x) {
  Apply(result, x, "hyperbolic-arccosine", [](const Complex& z) { return boost::math::acosh(z); });
}
void atanh(Value& result, const Value& x) {
  Apply(result, x, "hyperbolic-arctangens", [](const Complex& z) { return boost::math::atanh(z); });
}

void deg2rad(Value& result, const Value& x) {
  Apply(result, x, "degtorad", [](const Complex& z) { return z * kPi / 180.0; });
}
void rad2deg(Value& result, const Value& x) {
  Apply(result, x, "radtodeg", [](const Complex& z) { return z * 180.0 / kPi; });
}
void log(Value& result, const Value& x) {
  Apply(result, x, "log", [](const Complex& z) { return std::log(z) * kLog10OfE; });
}
void ln(Value& result, const Value& x) {
  Apply(result, x, "ln", [](const Complex& z) { return std::log(z); });
}
void exp(Value& result, const Value& x) {
  if (x.IsUninitialized())
    throw CTypeException("Input object has invalid datatype: " + x.GetKindName());
  Apply(result, x, "exp", [](const Complex& z) { return std::exp(z); });
}
void sqrt(Value& result, const Value& x) {
  Apply(result, x, "sqrt", [](const Complex& z) { return std::sqrt(z); });
}

void ceil(Value& result, const Value& x) {
  Apply(result, x, "ceil",
        [](const Complex& z) { return Complex(std::ceil(z.real()), std::ceil(z.imag())); });
}
void floor(Value& result, const Value& x) {
  Apply(result, x, "floor",
        [](const Complex& z) { return Complex(std::floor(z.real()), std::floor(z.imag())); });
}
void round(Value& result, const Value& x, int digits) {
  const double scale = std::pow(10.0, digits);
  Apply(result, x, "round", [scale](const Complex& z) {
    return Complex(RoundTo(z.real(), scale), RoundTo(z.imag(), scale));
  });
}
void inf2nan(Value& result, const Value& x) {
  Apply(result, x, "infToNaN", [](const Complex& z) {
    const bool infinite = std::isinf(z.real()) || std::isinf(z.imag());
    return infinite ? Complex(std::numeric_limits<double>::quiet_NaN()) : z;
  });
}

}  // namespace corvath::math::functions
