#include "metamodel/kriging/definite_factor.h"

#include "metamodel/simd/dense_products.h"

#include <limits>

namespace corvath::math::metamodel {

bool DefiniteFactor::Compute(const Eigen::MatrixXd& matrix) {
  pivoted_ = false;
  root_ = matrix;
  work_.resize(simd::kProductWork);
  if (simd::GetDenseRoutines().cholesky(root_.data(), root_.rows(), root_.rows(), work_.data())) {
    // Pivots of a singular matrix come out as rounding, of either sign.
    const double rounding = 4.0 * static_cast<double>(matrix.rows()) *
                            std::numeric_limits<double>::epsilon() * matrix.diagonal().maxCoeff();
    if ((root_.diagonal().array().square() > rounding).all()) return true;
  }
  pivoted_ = true;
  ldlt_.compute(matrix);
  return (ldlt_.vectorD().array() > 0.0).all();  // this way round, NaN is refused too
}

double DefiniteFactor::LogDeterminant() const {
  if (pivoted_) return ldlt_.vectorD().array().log().sum();
  return 2.0 * root_.diagonal().array().log().sum();
}

Eigen::MatrixXd DefiniteFactor::Solve(const Eigen::Ref<const Eigen::MatrixXd>& b) const {
  if (pivoted_) return ldlt_.solve(b);
  Eigen::MatrixXd x = b;
  simd::GetDenseRoutines().solve(root_.data(), root_.rows(), root_.rows(), x.data(), x.rows(),
                                 x.cols());
  return x;
}

Eigen::MatrixXd DefiniteFactor::InverseRoot() const {
  Eigen::MatrixXd root =
      pivoted_ ? Eigen::MatrixXd(ldlt_.matrixL()) : root_.triangularView<Eigen::Lower>();
  simd::GetDenseRoutines().invert_lower(root.data(), root.rows(), root.rows(), work_.data());
  if (!pivoted_) return root;
  root = ldlt_.vectorD().cwiseSqrt().cwiseInverse().asDiagonal() * root;
  // root P; from the right, Eigen would apply the transpositions in the wrong order.
  return (ldlt_.transpositionsP().transpose() * root.transpose()).transpose();
}

void DefiniteFactor::InverseLower(Eigen::MatrixXd& inverse) const {
  if (pivoted_) {
    const Eigen::MatrixXd root = InverseRoot();
    inverse.noalias() = root.transpose() * root;
    return;
  }
  inverse = root_;
  const simd::DenseRoutines& routines = simd::GetDenseRoutines();
  routines.invert_lower(inverse.data(), inverse.rows(), inverse.rows(), work_.data());
  routines.square_lower(inverse.data(), inverse.rows(), inverse.rows(), work_.data());
}

}  // namespace corvath::math::metamodel
