#pragma once

#include <Eigen/Core>

namespace corvath::math::metamodel {

/// F with F' F = A^-1, for a symmetric positive definite A (N x N): an inverse that keeps its
/// square root, so that blocks of it cost only the columns that they need. O(N^3), about the price
/// of three Cholesky factorisations, in the memory of F and one copy of A.
/// @returns false when A is not positive definite to working accuracy
bool InverseRoot(const Eigen::MatrixXd& matrix, Eigen::MatrixXd& root);

}  // namespace corvath::math::metamodel
