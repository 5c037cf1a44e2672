#pragma once

#include "literature/dual.h"

#include <limits>
#include <vector>

namespace literature {

/// Bound of the collection that does not exist.
constexpr double kNone = std::numeric_limits<double>::max();

/// A problem of W. Hock, K. Schittkowski, "Test Examples for Nonlinear Programming Codes", Lecture
/// Notes in Economics and Mathematical Systems 187, Springer 1981: minimise f subject to g_j = 0
/// (the equalities first), g_j >= 0, and bounds.
struct CollectedProblem {
  int number;
  int num_equalities;
  int num_inequalities;
  std::vector<double> start;
  std::vector<double> lower;  ///< empty: no lower bounds; one entry: for all variables
  std::vector<double> upper;
  double optimum;
  /// f of x[1] ... x[n]; writes g[1] ... g[m].
  using Evaluate = Dual (*)(const Dual* x, Dual* g);
  Evaluate evaluate = nullptr;

  int NumVariables() const { return static_cast<int>(start.size()); }
  int NumConstraints() const { return num_equalities + num_inequalities; }
  double Lower(int i) const { return At(lower, i, -kNone); }
  double Upper(int i) const { return At(upper, i, kNone); }

 private:
  static double At(const std::vector<double>& bounds, int i, double none) {
    if (bounds.empty()) return none;
    return bounds.size() == 1 ? bounds[0] : bounds[static_cast<std::size_t>(i)];
  }
};

constexpr int kMaxVariables = 10;
constexpr int kMaxConstraints = 10;

/// f at x, and g[1] ... g[m], with their derivatives.
/// @param g  kMaxConstraints + 1 numbers
inline Dual EvaluateAt(const CollectedProblem& problem, const double* x, Dual* g) {
  Dual variables[kMaxVariables + 1];
  for (int i = 0; i < problem.NumVariables(); ++i) {
    variables[i + 1].value = x[i];
    variables[i + 1].slope[static_cast<std::size_t>(i)] = 1.0;
  }
  return problem.evaluate(variables, g);
}

/// 82 problems of the collection in the order of their numbers.
const std::vector<CollectedProblem>& HockSchittkowski();

/// Fifteen of them for the tests, chosen so that a fault of the method which any problem betrays
/// fails one of these.
const std::vector<CollectedProblem>& ChosenHockSchittkowski();

}  // namespace literature
