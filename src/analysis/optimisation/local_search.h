#pragma once

#include "analysis/optimisation/nonlinear_program.h"
#include "analysis/optimisation/sqp_form.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::analysis {

/// Minimise one objective: itself, or the largest of its terms.
SqpForm ObjectiveForm(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                      Eigen::Index objective = 0);

/// Come as far as possible from `reference` against `direction` (all positive) in the space of the
/// objectives: the least t with f_i(x) <= reference_i + t direction_i for all i. After
/// A. Pascoletti, P. Serafini, "Scalarizing vector optimization problems", Journal of Optimization
/// Theory and Applications 42, 1984, pp. 499-524. A small share of the sum of the objectives is
/// added, so that of points with the same t none is taken that another one dominates.
SqpForm ReferenceForm(const NonlinearProgram& program, const Eigen::VectorXd& scales,
                      const Eigen::VectorXd& reference, const Eigen::VectorXd& direction);

/// The least largest breach of the limits in units of the scales, and a little inside them.
SqpForm FeasibilityForm(const NonlinearProgram& program, const Eigen::VectorXd& scales);

struct LocalOptimum {
  Evaluated point;
  double objective = 0.0;  ///< of the form
  Breach breach;
  bool converged = false;

  bool IsFeasible() const { return breach.relative <= kRounding; }
};

/// Points that keep the limits before those that break them by rounding, and these before others;
/// then by objective or breach.
bool IsBetter(const LocalOptimum& a, const LocalOptimum& b);

/// Which inputs a search among states leaves as they are. @param unordered_alone  ordered states are a
/// range
std::vector<bool> HeldDiscrete(const NonlinearProgram& program, bool unordered_alone = false);

/// An optimum of the form from `start` by SQP, the `held` inputs fixed. Limits that rounding and the
/// tolerance of the method leave broken are tightened until the point keeps them. From where the
/// method finds no way to the limits, their breach is minimised first; if it stays, the point of
/// the least breach is the result.
LocalOptimum SearchLocally(const NonlinearProgram& program, const SqpForm& form,
                           const Eigen::VectorXd& scales, const std::vector<bool>& held,
                           const Evaluated& start);

/// An optimum of a program with discrete inputs from `start`: the relaxed problem, in which ordered
/// states are a range; the states around its solution; then neighbours of the best while they
/// improve on it, all with SQP on the continuous inputs. A program of few combinations has all of
/// them for neighbours. Without discrete inputs SearchLocally.
LocalOptimum SearchMixed(const NonlinearProgram& program, const SqpForm& form,
                         const Eigen::VectorXd& scales, const Evaluated& start);

}  // namespace corvath::analysis
