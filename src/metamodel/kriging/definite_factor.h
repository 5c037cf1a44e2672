#pragma once

#include <Eigen/Cholesky>
#include <Eigen/Core>

namespace corvath::math::metamodel {

/// Factorisation of a symmetric matrix A (N x N) that is positive definite, or is found not to be.
///
/// The Cholesky factorisation in blocks where all its pivots stand clear of the rounding; elsewhere
/// the one with pivoting, three times as slow, decides whether A is definite, and serves. An object
/// that is used again for the same N allocates nothing.
class DefiniteFactor {
 public:
  /// Reads the lower triangle of `matrix`. O(N^3).
  /// @returns false when A is not positive definite to working accuracy; nothing else may be called
  bool Compute(const Eigen::MatrixXd& matrix);

  /// ln det A.
  double LogDeterminant() const;
  /// A^-1 b for each column of `b`.
  Eigen::MatrixXd Solve(const Eigen::Ref<const Eigen::MatrixXd>& b) const;
  /// F with F' F = A^-1: an inverse that keeps its square root, so that blocks of it cost only the
  /// columns that they need.
  Eigen::MatrixXd InverseRoot() const;
  /// The lower triangle of A^-1; what stands above it is undefined.
  void InverseLower(Eigen::MatrixXd& inverse) const;

 private:
  Eigen::MatrixXd root_;          ///< its lower triangle L: A = L L'
  mutable Eigen::VectorXd work_;  ///< scratch memory of the routines: not for two threads at once
  Eigen::LDLT<Eigen::MatrixXd> ldlt_;
  bool pivoted_ = false;  ///< ldlt_ serves
};

}  // namespace corvath::math::metamodel
