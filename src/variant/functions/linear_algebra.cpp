#include "variant/functions/linear_algebra.h"

#include "variant/operators/arithmetic.h"
#include "variant/operators/entrywise.h"
#include "variant/operators/matrix_product.h"
#include "variant/value/complex_division.h"
#include "variant/value/limits.h"

#include <algorithm>
#include <cmath>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;
using Vector = Value::Vector;
using Matrix = Value::Matrix;

[[noreturn]] void ThrowSingular() {
  throw CVariantException("Error within LU-Factorisation.");
}

Complex* Row(Matrix& m, std::size_t i) {
  return m.data().begin() + i * m.size2();
}

/// target -= factor * source, over columns [begin, end).
void SubtractRow(Complex* target, const Complex& factor, const Complex* source, std::size_t begin,
                 std::size_t end) {
  for (std::size_t j = begin; j < end; ++j) target[j] -= factor * source[j];
}

/// One step of Gaussian elimination in place: column k below the diagonal becomes the factors.
void EliminateColumn(Matrix& a, std::size_t k) {
  if (a(k, k) == 0.0) ThrowSingular();
  for (std::size_t i = k + 1; i < a.size1(); ++i) {
    a(i, k) = Quotient(a(i, k), a(k, k));
    SubtractRow(Row(a, i), a(i, k), Row(a, k), k + 1, a.size2());
  }
}

Matrix Inverse(Matrix a) {
  const std::size_t n = a.size1();
  Matrix inverse(n, n, Complex());
  for (std::size_t i = 0; i < n; ++i) inverse(i, i) = 1.0;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t pivot = k;
    for (std::size_t i = k + 1; i < n; ++i)
      if (std::abs(a(i, k)) > std::abs(a(pivot, k))) pivot = i;
    if (pivot != k) {
      std::swap_ranges(Row(a, k), Row(a, k) + n, Row(a, pivot));
      std::swap_ranges(Row(inverse, k), Row(inverse, k) + n, Row(inverse, pivot));
    }
    EliminateColumn(a, k);
    for (std::size_t i = k + 1; i < n; ++i)
      SubtractRow(Row(inverse, i), a(i, k), Row(inverse, k), 0, n);
  }
  for (std::size_t k = n; k-- > 0;) {  // back substitution, all columns at once
    for (std::size_t i = k + 1; i < n; ++i)
      SubtractRow(Row(inverse, k), a(k, i), Row(inverse, i), 0, n);
    for (std::size_t j = 0; j < n; ++j) inverse(k, j) = Quotient(inverse(k, j), a(k, k));
  }
  return inverse;
}

}  // namespace

void transpose(Value& result, const Value& x) {
  if (!x.IsMatrix())
    throw CTypeException("Invalid type. Only type MATRIX allowed for transpose-function.");
  const Matrix& m = x.GetMatrix();
  Matrix transposed(m.size2(), m.size1());
  for (std::size_t i = 0; i < m.size1(); ++i)
    for (std::size_t j = 0; j < m.size2(); ++j) transposed(j, i) = m(i, j);
  result = Value(std::move(transposed));
}

void innerprod(Value& result, const Value& v, const Value& u) {
  if (!v.IsVector() || !u.IsVector())
    throw CTypeException("inner product: Inputs must be of type vector.");
  if (v.Size() != u.Size())
    throw CDimensionException("inner product: Vector dimensions do not match.");
  result = Value(Product(v.GetVector(), u.GetVector()));
}

void outerprod(Value& result, const Value& v, const Value& u) {
  if (!v.IsVector() || !u.IsVector())
    throw CTypeException("outer product: Inputs must be of type vector.");
  CheckEntries(v.Size(), u.Size());
  Matrix product(v.Size(), u.Size());
  for (std::size_t i = 0; i < product.size1(); ++i)
    for (std::size_t j = 0; j < product.size2(); ++j)
      product(i, j) = v.GetVector()(i) * u.GetVector()(j);
  result = Value(std::move(product));
}

void matrixmult(Value& result, const Value& a, const Value& b) {
  const char* mismatch = nullptr;
  if (a.IsVector() && b.IsMatrix()) {
    if (a.Size() != b.Size1())
      mismatch = "matrix multiplication: Size of vector does not match number of rows in matrix.";
  } else if (a.IsMatrix() && b.IsVector()) {
    if (a.Size2() != b.Size())
      mismatch =
          "matrix multiplication: Number of columns in matrix does not match size of vector.";
  } else if (a.IsMatrix() && b.IsMatrix()) {
    if (a.Size2() != b.Size1())
      mismatch =
          "matrix multiplication: Number of columns in first matrix does not match number of rows "
          "in second matrix.";
  } else {
    throw CTypeException("matrix multiplication: Inputs have invalid data type.");
  }
  if (mismatch != nullptr) throw CDimensionException(mismatch);
  Multiply(result, a, b);
}

void lufactorize(Value& result, const Value& x) {
  if (!x.IsMatrix())
    throw CTypeException("LU Factorization only possible if input is of type MATRIX.");
  if (x.Size1() != x.Size2())
    throw CDimensionException("Matrix must be quadratic for LU factorization.");
  Matrix factors(x.GetMatrix());
  for (std::size_t k = 0; k < factors.size1(); ++k) EliminateColumn(factors, k);
  result = Value(std::move(factors));
}

void invert(Value& result, const Value& x) {
  switch (x.GetKind()) {
    case Value::BOOLEAN:
      result = Value(!x.GetBoolean());
      break;
    case Value::SCALAR:
    case Value::VECTOR:
      result = entrywise::Map(x, [](const Complex& z) { return Quotient(1.0, z); });
      break;
    case Value::MATRIX:
      if (x.Size1() != x.Size2())
        throw CVariantException("Matrix Inverse only defined for quadratic matricees.");
      result = Value(Inverse(x.GetMatrix()));
      break;
    default:
      throw CTypeException(entrywise::kInvalidKind);
  }
}

}  // namespace corvath::math::functions
