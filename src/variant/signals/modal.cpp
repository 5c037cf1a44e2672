#include "variant/signals/modal.h"

#include "foundation/math_exception.h"
#include "variant/functions/linear_algebra.h"
#include "variant/value/complex_division.h"
#include "variant/value/limits.h"

#include <limits>
#include <string>
#include <vector>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;
using Matrix = Value::Matrix;

/// The columns one after the other.
std::vector<Complex> Columns(const Matrix& m) {
  std::vector<Complex> columns;
  columns.reserve(m.size1() * m.size2());
  for (std::size_t j = 0; j < m.size2(); ++j)
    for (std::size_t i = 0; i < m.size1(); ++i) columns.push_back(m(i, j));
  return columns;
}

/// Sum of conj(a_k) b_k.
Complex Inner(const Complex* a, const Complex* b, std::size_t count) {
  double re = 0.0;
  double im = 0.0;
  for (std::size_t k = 0; k < count; ++k) {
    re += a[k].real() * b[k].real() + a[k].imag() * b[k].imag();
    im += a[k].real() * b[k].imag() - a[k].imag() * b[k].real();
  }
  return {re, im};
}

/// `measure(<a_i, b_j>, <a_i, a_i>, <b_j, b_j>)` of all pairs of columns.
template <class Measure>
Matrix OfPairs(const Matrix& a, const Matrix& b, Measure measure) {
  CheckEntries(a.size2(), b.size2());
  const std::size_t n = a.size1();
  const std::vector<Complex> a_columns = Columns(a);
  const std::vector<Complex> b_columns = Columns(b);
  std::vector<double> b_squares(b.size2());
  for (std::size_t j = 0; j < b.size2(); ++j) {
    const Complex* const column = b_columns.data() + j * n;
    b_squares[j] = Inner(column, column, n).real();
  }
  Matrix result(a.size2(), b.size2());
  for (std::size_t i = 0; i < a.size2(); ++i) {
    const Complex* const column = a_columns.data() + i * n;
    const double a_square = Inner(column, column, n).real();
    for (std::size_t j = 0; j < b.size2(); ++j)
      result(i, j) = measure(Inner(column, b_columns.data() + j * n, n), a_square, b_squares[j]);
  }
  return result;
}

void RequireMatrices(const Value& a, const Value& b, const char* text) {
  if (!a.IsMatrix() || !b.IsMatrix()) throw CTypeException(text);
}

}  // namespace

void mac(Value& result, const Value& a, const Value& b) {
  RequireMatrices(a, b, "MAC: Inputs must be matrices.");
  if (a.Size1() != b.Size1())
    throw CDimensionException("MAC: Input matrices need the same number of rows.");
  result = Value(OfPairs(a.GetMatrix(), b.GetMatrix(),
                         [](const Complex& inner, double a_square, double b_square) {
                           return Quotient(std::norm(inner), a_square * b_square);
                         }));
}

void comac(Value& result, const Value& a, const Value& b) {
  RequireMatrices(a, b, "CoMAC: Inputs must be matrices.");
  if (a.Size1() != b.Size1() || a.Size2() != b.Size2())
    throw CDimensionException("CoMAC: Input matrices need the same dimensions.");
  Value a_rows;
  Value b_rows;
  transpose(a_rows, a);
  transpose(b_rows, b);
  mac(result, a_rows, b_rows);
}

void sdi(Value& result, const Value& a, const Value& b) {
  RequireMatrices(a, b, "SDI: Input must be a matrices.");
  if (a.Size1() != b.Size1())
    throw CDimensionException("SDI: Input matrices need the same number of rows.");
  result = Value(OfPairs(a.GetMatrix(), b.GetMatrix(),
                         [](const Complex& inner, double a_square, double b_square) {
                           const Complex half = Quotient(inner.real(), a_square + b_square);
                           return 4.0 * half * half;
                         }));
}

void modepairs(Value& result, const Value& a, const Value& b, const Value& limit) {
  RequireMatrices(a, b, "modepairs: Inputs must be matrices.");
  if (!limit.IsScalar() || limit.IsComplex())
    throw CTypeException("modepairs: Limit must be a real scalar.");
  Value similarity;
  mac(similarity, a, b);
  const Matrix& m = similarity.GetMatrix();
  Value::Vector pairs(m.size2());
  for (std::size_t j = 0; j < m.size2(); ++j) {
    double best = limit.GetScalar().real();
    pairs(j) = std::numeric_limits<double>::quiet_NaN();
    for (std::size_t i = 0; i < m.size1(); ++i)
      if (m(i, j).real() > best) {
        best = m(i, j).real();
        pairs(j) = static_cast<double>(i);
      }
  }
  result = Value(std::move(pairs));
}

}  // namespace corvath::math::functions
