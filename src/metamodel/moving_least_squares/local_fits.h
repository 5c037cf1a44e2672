#pragma once

#include "metamodel/types.h"

#include <Eigen/Cholesky>
#include <Eigen/Core>

namespace corvath::math::metamodel {

/// Weighted polynomial fits to the same data under many sets of weights, one set per prediction.
///
/// The normal matrices of a block of sets come from one product of the weights with a table of the
/// products of basis functions; then they are solved side by side (up to 16 coefficients), and by an
/// LDLT with pivoting where they are not clearly definite. Where the table would be large (many
/// coefficients), each normal matrix is formed by itself. Holds references and buffers: one
/// object per call and thread.
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
  void Average(const Eigen::Ref<const Eigen::MatrixXd>& weights,
               Eigen::Ref<Eigen::VectorXd> results) const;
  /// Normal matrix (lower triangle) and right side under one set of weights.
  void FormSystem(const Eigen::Ref<const Eigen::VectorXd>& weights);
  /// All of a block, to sums_.
  void FormSystems(const Eigen::Ref<const Eigen::MatrixXd>& weights);
  /// NaN where a system of sums_ is not clearly definite.
  void SolveSystems(const Eigen::Ref<const Eigen::MatrixXd>& basis_at,
                    Eigen::Ref<Eigen::VectorXd> results) const;
  void UnpackSystem(const double* sums);

  const Eigen::MatrixXd& basis_;
  const Eigen::VectorXd& values_;
  bool constant_ = false;     ///< all values equal: their fit is known
  Eigen::MatrixXd products_;  ///< N x (P (P + 1) / 2 + P): b_p b_q for p >= q, then b_p y; or empty
  Eigen::MatrixXd sums_;      ///< of products_ under each set of weights
  Eigen::MatrixXd weighted_;  ///< part of diag(w) basis_, where there is no table
  Eigen::MatrixXd normal_;    ///< P x P
  Eigen::VectorXd right_;     ///< P
  Eigen::VectorXd solution_;  ///< P
  Eigen::LDLT<Eigen::MatrixXd> factors_;
};

}  // namespace corvath::math::metamodel
