#pragma once

#include <Eigen/Core>

#include <cstdint>

namespace corvath::algorithm::optimizer {

/// A quadratic program as QL takes it, see qp_solver.h.
struct QuadraticProgram {
  std::int32_t num_constraints, num_equalities, row_dimension;
  std::int32_t num_variables, matrix_dimension;
  double* matrix;
  const double* linear;
  const double* rows;
  const double* constants;
  const double* lower;
  const double* upper;
};

/// The Goldfarb-Idnani iteration over the work arrays of QL.
///
/// With C = R'R and N the unit normals of the q active constraints it keeps J, so that
///
///     J'CJ = I,   J'N = [T; 0],   T upper triangular, q x q
///
/// The first q columns of J span the active normals in the metric of C, the others are the
/// directions in which x can move without leaving the active constraints.
class DualActiveSet {
 public:
  /// `work` and `active` have the lengths that QL states.
  DualActiveSet(const QuadraticProgram& program, double accuracy, double* work,
                std::int32_t* active);

  /// 0: solved; 1: more than `limit` changes of the active set; 2: the active constraints do not
  /// hold to any useful accuracy; 3: numbers that are not finite; -k: constraint k is not
  /// consistent with the active ones.
  /// @param factorise  whether the matrix is C itself, not R
  std::int32_t Solve(bool factorise, std::int32_t limit, double* x);

  /// Multiple of the unit matrix that had to be added to C.
  double Enlargement() const { return enlargement_; }

  /// Steps of the walk: each adds a constraint to the active set or drops one.
  std::int32_t NumChanges() const { return num_changes_; }

  /// Number of active constraints, and the index of the k-th of them.
  std::int32_t NumActive() const { return num_active_; }
  std::int32_t Active(std::int32_t k) const { return active_[k]; }
  /// Multiplier of the k-th active constraint for its normal as the caller gave it.
  double Multiplier(std::int32_t k) const;

 private:
  using VectorMap = Eigen::Map<Eigen::VectorXd>;
  using MatrixMap = Eigen::Map<Eigen::MatrixXd>;

  std::int32_t ScaleRows();
  bool Factorise();
  double FailedPivotShortfall(Eigen::Index pivot, double value);
  void InvertFactor();
  std::int32_t MostViolated();
  double Residual(std::int32_t constraint) const;
  double Tolerance() const;
  std::int32_t AddConstraint(std::int32_t constraint, std::int32_t limit);
  double LargestProjection(Eigen::Index k) const;
  bool StepDirections(std::int32_t constraint);
  void LoadNormal(std::int32_t constraint);
  void Append(std::int32_t constraint, double multiplier);
  void Drop(std::int32_t position);
  double RoundingOfDependence() const;
  void Recompute();
  bool Refine();
  bool IsEquality(std::int32_t constraint) const { return constraint <= program_.num_equalities; }
  void SetActiveFlag(std::int32_t constraint, bool active);
  bool IsFinite() const;

  /// Column k of T, k + 1 entries.
  double* Column(Eigen::Index k) { return triangle_ + k * (k + 1) / 2; }

  QuadraticProgram program_;
  double accuracy_;
  Eigen::Index n_, m_;
  std::int32_t* active_;  ///< numbers of the active constraints, from 1, bounds behind constraints
  std::int32_t num_active_ = 0;
  std::int32_t num_changes_ = 0;
  double enlargement_ = 0.0;
  double norm_of_j_ = 0.0;
  double farthest_ = 0.0;  ///< norm of x since it was worked out from the active set

  MatrixMap j_;            ///< n x n
  double* triangle_;       ///< T, packed by columns
  VectorMap x_;            ///< n
  VectorMap multipliers_;  ///< q, for unit normals
  VectorMap normal_;       ///< n; unit normal of the constraint that enters
  VectorMap projected_;    ///< n; J' normal
  VectorMap direction_;    ///< n; primal direction
  VectorMap change_;       ///< q; dual direction
  VectorMap bound_flags_;  ///< n; 1: lower bound active, 2: upper one
  VectorMap diagonal_;     ///< n; of C
  VectorMap scales_;       ///< m; 1 / |a_j|, negative while j is active, 0 for a row of zeros
  VectorMap residuals_;    ///< m
};

}  // namespace corvath::algorithm::optimizer
