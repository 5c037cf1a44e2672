#pragma once

#include <Eigen/Core>

namespace corvath::algorithm::optimizer {

/// Entries of a matrix up to which a product with a vector takes less than a call of Eigen's
/// blocked one, which packs and dispatches.
constexpr Eigen::Index kSmallProduct = 256;

/// Entries of a vector up to which a plain loop takes less than Eigen's, which looks for aligned ones.
constexpr Eigen::Index kSmallVector = 12;

/// y += factor * x.
inline void AddMultiple(Eigen::Index size, double factor, const double* x, double* y) {
  if (size <= kSmallVector)
    for (Eigen::Index i = 0; i < size; ++i) y[i] += factor * x[i];
  else
    Eigen::Map<Eigen::VectorXd>(y, size) += factor * Eigen::Map<const Eigen::VectorXd>(x, size);
}

/// x'y.
inline double Dot(Eigen::Index size, const double* x, const double* y) {
  if (size > kSmallVector)
    return Eigen::Map<const Eigen::VectorXd>(x, size).dot(
        Eigen::Map<const Eigen::VectorXd>(y, size));
  double sum = 0.0;
  for (Eigen::Index i = 0; i < size; ++i) sum += x[i] * y[i];
  return sum;
}

/// to = matrix * vector; `to` is none of the operands.
template <class Matrix, class Vector, class Result>
void Multiply(const Matrix& matrix, const Vector& vector, Result&& to) {
  if (matrix.size() <= kSmallProduct)
    to.noalias() = matrix.lazyProduct(vector);
  else
    to.noalias() = matrix * vector;
}

/// to += matrix * vector; the same.
template <class Matrix, class Vector, class Result>
void AddProduct(const Matrix& matrix, const Vector& vector, Result&& to) {
  if (matrix.size() <= kSmallProduct)
    to.noalias() += matrix.lazyProduct(vector);
  else
    to.noalias() += matrix * vector;
}

}  // namespace corvath::algorithm::optimizer
