#pragma once

#include <array>
#include <cmath>

namespace literature {

/// A number with its exact derivatives by up to 10 variables (forward differentiation), so that one
/// formula gives values and analytic gradients.
struct Dual {
  Dual(double number = 0.0) : value(number) {}
  double value;
  std::array<double, 10> slope{};
};

/// h(a, b) with the partial derivatives da and db.
inline Dual Chain(double value, const Dual& a, double da, const Dual& b, double db) {
  Dual result(value);
  for (std::size_t i = 0; i < result.slope.size(); ++i)
    result.slope[i] = da * a.slope[i] + db * b.slope[i];
  return result;
}
inline Dual Chain(double value, const Dual& a, double da) {
  return Chain(value, a, da, a, 0.0);
}

inline Dual operator+(const Dual& a, const Dual& b) {
  return Chain(a.value + b.value, a, 1.0, b, 1.0);
}
inline Dual operator-(const Dual& a, const Dual& b) {
  return Chain(a.value - b.value, a, 1.0, b, -1.0);
}
inline Dual operator-(const Dual& a) {
  return Chain(-a.value, a, -1.0);
}
inline Dual operator*(const Dual& a, const Dual& b) {
  return Chain(a.value * b.value, a, b.value, b, a.value);
}
inline Dual operator/(const Dual& a, const Dual& b) {
  return Chain(a.value / b.value, a, 1.0 / b.value, b, -a.value / (b.value * b.value));
}
inline Dual& operator+=(Dual& a, const Dual& b) {
  return a = a + b;
}
inline Dual& operator*=(Dual& a, const Dual& b) {
  return a = a * b;
}
inline Dual pow(const Dual& a, double p) {
  return Chain(std::pow(a.value, p), a, p * std::pow(a.value, p - 1.0));
}
inline Dual sqrt(const Dual& a) {
  return Chain(std::sqrt(a.value), a, 0.5 / std::sqrt(a.value));
}
inline Dual exp(const Dual& a) {
  return Chain(std::exp(a.value), a, std::exp(a.value));
}
inline Dual log(const Dual& a) {
  return Chain(std::log(a.value), a, 1.0 / a.value);
}
inline Dual sin(const Dual& a) {
  return Chain(std::sin(a.value), a, std::cos(a.value));
}
inline Dual cos(const Dual& a) {
  return Chain(std::cos(a.value), a, -std::sin(a.value));
}

inline Dual Sq(const Dual& a) {
  return a * a;
}
inline Dual Cube(const Dual& a) {
  return a * a * a;
}
inline Dual Fourth(const Dual& a) {
  return Sq(Sq(a));
}

}  // namespace literature
