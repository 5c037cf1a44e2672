#pragma once

#include "optimizer/vector_view.h"

#include <Eigen/Core>

namespace corvath::algorithm::optimizer {

/// Augmented Lagrangian in x and the multiplier estimates v, over the constraints and both bounds
/// of each variable, with a penalty r for each:
///
///     f(x) - sum_active (v_j - r_j g_j / 2) g_j - sum_others v_j^2 / (2 r_j)
///
/// An equality is active, an inequality where g_j <= v_j / r_j. Bounds are inequalities whose g is
/// the slack. K. Schittkowski, "On the convergence of a sequential quadratic programming method with
/// an augmented Lagrangian line search function", Math. Operationsforschung und Statistik, Ser.
/// Optimization 14, 1983, pp. 197-216.
///
/// Vectors v, u and r hold M constraints, N lower, N upper bounds.
class MeritFunction {
 public:
  using Vector = VectorView;

  /// @param lower, upper  N bounds of x
  /// @param v, r          estimates of the multipliers and penalties; all are referred to
  MeritFunction(Eigen::Index num_equalities, const Vector& lower, const Vector& upper,
                const Vector& v, const Vector& r)
      : num_equalities_(num_equalities), lower_(lower), upper_(upper), v_(v), r_(r) {}

  /// At x with values f and g, and the estimates v + alpha (u - v).
  double Value(double f, const Vector& g, const Vector& x, const Vector& u, double alpha) const;

  /// Gradient in x at the estimates v.
  /// @param df        N
  /// @param dg        M x N
  /// @param weights   M, work
  /// @param gradient  N, out
  void Gradient(const Vector& df,
                const Eigen::Map<const Eigen::MatrixXd, 0, Eigen::OuterStride<>>& dg,
                const Vector& g, const Vector& x, Eigen::Ref<Eigen::VectorXd> weights,
                Eigen::Ref<Eigen::VectorXd> gradient) const;

  /// The share of the multipliers in the derivative along (d, u - v).
  double MultiplierSlope(const Vector& g, const Vector& x, const Vector& u) const;

 private:
  Eigen::Index num_equalities_;
  Vector lower_, upper_, v_, r_;
};

}  // namespace corvath::algorithm::optimizer
