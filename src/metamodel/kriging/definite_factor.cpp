#include "metamodel/kriging/definite_factor.h"

#include <limits>

namespace corvath::math::metamodel {

namespace {

/// Below this size halving costs more than it saves.
constexpr Eigen::Index kSmall = 64;

/// Inverse of a lower triangular matrix in place; what is above the diagonal is not touched.
/// By halves, since |A 0; B C|^-1 = |A^-1 0; -C^-1 B A^-1, C^-1|: the work lies in products.
void InvertLower(Eigen::Ref<Eigen::MatrixXd> lower) {
  const Eigen::Index n = lower.rows();
  if (n <= kSmall) {
    Eigen::MatrixXd inverse = Eigen::MatrixXd::Identity(n, n);
    lower.triangularView<Eigen::Lower>().solveInPlace(inverse);
    lower.triangularView<Eigen::Lower>() = inverse;
    return;
  }
  const Eigen::Index half = n / 2;
  auto a = lower.topLeftCorner(half, half);
  auto b = lower.bottomLeftCorner(n - half, half);
  auto c = lower.bottomRightCorner(n - half, n - half);
  InvertLower(a);
  InvertLower(c);
  b = -(b * a.triangularView<Eigen::Lower>());
  b = c.triangularView<Eigen::Lower>() * b;
}

/// L' L of a lower triangular matrix in place, its lower triangle; what is above is not touched.
/// By halves: |A 0; B C|' |A 0; B C| = |A'A + B'B, . ; C'B, C'C|.
void SquareLower(Eigen::Ref<Eigen::MatrixXd> lower) {
  const Eigen::Index n = lower.rows();
  if (n <= kSmall) {
    const Eigen::MatrixXd l = lower.triangularView<Eigen::Lower>();
    lower.triangularView<Eigen::Lower>() = l.transpose() * l;
    return;
  }
  const Eigen::Index half = n / 2;
  auto a = lower.topLeftCorner(half, half);
  auto b = lower.bottomLeftCorner(n - half, half);
  auto c = lower.bottomRightCorner(n - half, n - half);
  SquareLower(a);
  a.selfadjointView<Eigen::Lower>().rankUpdate(b.transpose());
  b = c.triangularView<Eigen::Lower>().transpose() * b;
  SquareLower(c);
}

}  // namespace

bool DefiniteFactor::Compute(const Eigen::MatrixXd& matrix) {
  pivoted_ = false;
  llt_.compute(matrix);
  if (llt_.info() == Eigen::Success) {
    // Pivots of a singular matrix come out as rounding, of either sign.
    const double rounding = 4.0 * static_cast<double>(matrix.rows()) *
                            std::numeric_limits<double>::epsilon() * matrix.diagonal().maxCoeff();
    if ((llt_.matrixLLT().diagonal().array().square() > rounding).all()) return true;
  }
  pivoted_ = true;
  ldlt_.compute(matrix);
  return (ldlt_.vectorD().array() > 0.0).all();  // this way round, NaN is refused too
}

double DefiniteFactor::LogDeterminant() const {
  if (pivoted_) return ldlt_.vectorD().array().log().sum();
  return 2.0 * llt_.matrixLLT().diagonal().array().log().sum();
}

Eigen::MatrixXd DefiniteFactor::Solve(const Eigen::Ref<const Eigen::MatrixXd>& b) const {
  if (pivoted_) return ldlt_.solve(b);
  return llt_.solve(b);
}

Eigen::MatrixXd DefiniteFactor::InverseRoot() const {
  Eigen::MatrixXd root;
  if (!pivoted_) {
    root = llt_.matrixL();
    InvertLower(root);
    return root;
  }
  root = ldlt_.matrixL();
  InvertLower(root);
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
  inverse = llt_.matrixLLT();
  InvertLower(inverse);
  SquareLower(inverse);
}

}  // namespace corvath::math::metamodel
