#include "metamodel/inverse_root.h"

#include <Eigen/Cholesky>

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

}  // namespace

bool InverseRoot(const Eigen::MatrixXd& matrix, Eigen::MatrixXd& root) {
  const Eigen::LLT<Eigen::MatrixXd> llt(matrix);
  if (llt.info() == Eigen::Success) {
    root = llt.matrixL();
    InvertLower(root);
    return true;
  }
  // Nearly singular: the factorisation with pivots, by which a build decides, may still stand it.
  const Eigen::LDLT<Eigen::MatrixXd> ldlt(matrix);
  const Eigen::VectorXd pivots = ldlt.vectorD();
  if (!(pivots.array() > 0.0).all()) return false;
  root = ldlt.matrixL();
  InvertLower(root);
  root = pivots.cwiseSqrt().cwiseInverse().asDiagonal() * root;
  root = root * ldlt.transpositionsP();
  return true;
}

}  // namespace corvath::math::metamodel
