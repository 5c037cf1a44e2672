#include "variant/functions/reductions.h"

#include "variant/operators/entrywise.h"
#include "variant/value/complex_division.h"

#include <cmath>
#include <string>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;
using Vector = Value::Vector;
using Matrix = Value::Matrix;

void RefuseBoolean(const Value& x, const char* name) {
  if (x.IsBoolean())
    throw CTypeException(std::string("Invalid type BOOLEAN for ") + name + "-function.");
}

struct Minimum {
  static constexpr const char* kName = "minimum";
  static constexpr const char* kFunction = "min";
  static bool Better(double a, double b) { return a < b; }
};
struct Maximum {
  static constexpr const char* kName = "maximum";
  static constexpr const char* kFunction = "max";
  static bool Better(double a, double b) { return a > b; }
};

/// Position of the first extreme real part.
template <class Extreme>
std::size_t FindExtreme(const Complex* entries, std::size_t n, const char* shape) {
  if (n == 0)
    throw CDimensionException(std::string("Invalid ") + shape + " size. No elements to find " +
                              Extreme::kName + ".");
  std::size_t best = 0;
  for (std::size_t i = 1; i < n; ++i)
    if (Extreme::Better(entries[i].real(), entries[best].real())) best = i;
  return best;
}

template <class Extreme>
Value ExtremeOf(const Value& x) {
  RefuseBoolean(x, Extreme::kFunction);
  if (x.IsComplex())
    throw CTypeException(std::string("Input must be real for ") + Extreme::kFunction +
                         "-function.");
  switch (x.GetKind()) {
    case Value::SCALAR:
      return x;
    case Value::VECTOR: {
      const Vector& v = x.GetVector();
      return Value(v(FindExtreme<Extreme>(v.data().begin(), v.size(), "vector")));
    }
    case Value::MATRIX: {
      const auto& entries = x.GetMatrix().data();
      return Value(entries[FindExtreme<Extreme>(entries.begin(), entries.size(), "matrix")]);
    }
    case Value::SIGNAL:
    case Value::XYDATA: {
      const Matrix& data = x.GetMatrix();
      if (data.size1() == 0) FindExtreme<Extreme>(nullptr, 0, "signal");
      Matrix extremes(data.size1(), 2);
      for (std::size_t channel = 0; channel < data.size1(); ++channel) {
        const Complex* const row = data.data().begin() + channel * data.size2();
        const std::size_t best = FindExtreme<Extreme>(row, data.size2(), "signal");
        extremes(channel, 0) = x.GetVector()(best);
        extremes(channel, 1) = row[best];
      }
      const Value result(std::move(extremes));
      return x.IsSignal() ? result : result.GetRow(Value(0.0));
    }
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

template <class Extreme>
Value ExtremeOf(const std::vector<Value>& arguments) {
  if (arguments.empty()) return Value();
  if (arguments.size() == 1) return ExtremeOf<Extreme>(arguments.front());
  Vector numbers(arguments.size());
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i].IsComplex()) throw CTypeException("At least one input object is not real.");
    if (!arguments[i].IsScalar())
      throw CTypeException("At least one input object of unsupported type " +
                           arguments[i].GetKindName());
    numbers(i) = arguments[i].GetScalar();
  }
  return ExtremeOf<Extreme>(Value(std::move(numbers)));
}

/// `f(first, count)` of a VECTOR's entries or of each row of data: a SCALAR for VECTOR and XYDATA,
/// else a VECTOR of one number for each row.
template <class F>
Value ByRows(const Value& x, F f) {
  if (x.IsVector()) return Value(Complex(f(x.GetVector().data().begin(), x.Size())));
  if (!x.IsMatrix() && !x.HasTimeline()) throw CTypeException(entrywise::kInvalidKind);
  const Matrix& data = x.GetMatrix();
  const auto row = [&](std::size_t i) -> Complex {
    return f(data.data().begin() + i * data.size2(), data.size2());
  };
  if (x.IsXYData()) return Value(data.size1() > 0 ? row(0) : Complex(f(nullptr, 0)));
  Vector results(data.size1());
  for (std::size_t i = 0; i < results.size(); ++i) results(i) = row(i);
  return Value(std::move(results));
}

Complex Sum(const Complex* entries, std::size_t n) {
  Complex total = 0.0;
  for (std::size_t i = 0; i < n; ++i) total += entries[i];
  return total;
}

Complex Mean(const Complex* entries, std::size_t n) {
  return Quotient(Sum(entries, n), static_cast<double>(n));
}

Complex Deviation(const Complex* entries, std::size_t n) {
  if (n < 2) return 0.0;
  const Complex mean = Mean(entries, n);
  double squares = 0.0;
  for (std::size_t i = 0; i < n; ++i) squares += std::norm(mean - entries[i]);
  return std::sqrt(squares / static_cast<double>(n - 1));
}

/// |z|^n, exact squares for n = 2.
double MagnitudePower(const Complex& z, std::uint64_t n) {
  return n == 2 ? std::norm(z) : std::pow(std::abs(z), static_cast<double>(n));
}

Value NthNorm(const Value& x, std::uint64_t n, const char* name) {
  RefuseBoolean(x, name);
  if (x.IsScalar()) return Value(std::abs(x.GetScalar()));
  if (x.IsUninitialized()) throw CTypeException(entrywise::kInvalidKind);
  double total = 0.0;
  const auto& entries = x.IsVector() ? x.GetVector().data() : x.GetMatrix().data();
  for (const Complex& z : entries) total += MagnitudePower(z, n);
  return Value(n == 2 ? std::sqrt(total) : std::pow(total, 1.0 / static_cast<double>(n)));
}

}  // namespace

void min(Value& result, const Value& x) {
  result = ExtremeOf<Minimum>(x);
}
void max(Value& result, const Value& x) {
  result = ExtremeOf<Maximum>(x);
}
void min(Value& result, const std::vector<Value>& arguments) {
  result = ExtremeOf<Minimum>(arguments);
}
void max(Value& result, const std::vector<Value>& arguments) {
  result = ExtremeOf<Maximum>(arguments);
}

void sum(Value& result, const Value& x) {
  RefuseBoolean(x, "sum");
  result = x.IsScalar() ? x : ByRows(x, Sum);
}

void mean(Value& result, const Value& x) {
  RefuseBoolean(x, "mean");
  result = x.IsScalar() ? x : ByRows(x, Mean);
}

void stddev(Value& result, const Value& x) {
  RefuseBoolean(x, "stddev");
  result = x.IsScalar() ? Value(0.0) : ByRows(x, Deviation);
}

void norm(Value& result, const Value& x, std::uint64_t n) {
  result = NthNorm(x, n, "n-th norm");
}

void euklidnorm(Value& result, const Value& x) {
  result = NthNorm(x, 2, "euklidean norm");
}

}  // namespace corvath::math::functions
