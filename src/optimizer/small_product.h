#pragma once

#include <Eigen/Core>

namespace corvath::algorithm::optimizer {

/// Entries of a matrix up to which a product with a vector takes less than a call of Eigen's
/// blocked one, which packs and dispatches.
constexpr Eigen::Index kSmallProduct = 256;

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
