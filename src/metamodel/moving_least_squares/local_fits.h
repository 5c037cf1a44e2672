#pragma once

#include "metamodel/types.h"

#include <Eigen/Core>

namespace corvath::math::metamodel {

/// Weighted polynomial fits to the same data under many sets of weights, one set per prediction.
///
/// The normal equations of a block of sets come from the products of the weights with a table of the
/// products of basis functions; then they are solved side by side by L D L', and with pivoting
/// where they are not clearly definite. Sums are taken point after point and no operation is fused,
/// so that a fit depends neither on the processor nor on the rest of its block. Holds references and
/// buffers: one object per call and thread.
class LocalFits {
 public:
  /// @param basis   N x P at the data; 0 columns: weighted averages
  /// @param values  N
  LocalFits(const Eigen::MatrixXd& basis, const Eigen::VectorXd& values);

  /// Sets of weights that are worked on at once with little memory.
  Eigen::Index GetBlockSize() const;

  /// results(i): the fit under column i of `weights` (N x n), evaluated with row i of `basis_at`
  /// (n x P). With `require_reach` it is NaN where fewer than P weights exceed 1e-5 (averages take
  /// any weights). Weights that all vanish give NaN.
  void Predict(const Eigen::Ref<const Eigen::MatrixXd>& weights,
               const Eigen::Ref<const Eigen::MatrixXd>& basis_at, bool require_reach,
               Eigen::Ref<Eigen::VectorXd> results);

 private:
  /// The table of products of the data [first, first + count).
  void FillProducts(Eigen::Index first, Eigen::Index count);
  /// Normal equations under each set of weights, to sums_.
  void FormSums(const Eigen::Ref<const Eigen::MatrixXd>& weights);
  /// The fit at `at` (P) by L D L' in the order of the diagonal, the largest first. What a vanishing
  /// pivot leaves open is 0.
  double SolvePivoted(const double* sums, const Eigen::Ref<const Eigen::RowVectorXd>& at);

  const Eigen::MatrixXd& basis_;
  const Eigen::VectorXd& values_;
  bool constant_ = false;  ///< all values equal: their fit is known
  /// Per point b_p b_q for p >= q, then b_p y, then zeros up to a whole vector; without a basis y
  /// and 1. Of all points, or of as many as a part of the table has.
  Eigen::MatrixXd products_;
  Eigen::MatrixXd sums_;  ///< of products_ under each set of weights
  Eigen::VectorXd work_;
};

}  // namespace corvath::math::metamodel
