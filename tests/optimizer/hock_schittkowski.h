#pragma once

#include "optimizer/dual.h"

#include <limits>
#include <vector>

namespace support {

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
  Dual (*evaluate)(const Dual* x, Dual* g);

  int NumVariables() const { return static_cast<int>(start.size()); }
  double Lower(int i) const { return At(lower, i, -kNone); }
  double Upper(int i) const { return At(upper, i, kNone); }

 private:
  static double At(const std::vector<double>& bounds, int i, double none) {
    if (bounds.empty()) return none;
    return bounds.size() == 1 ? bounds[0] : bounds[static_cast<std::size_t>(i)];
  }
};

/// The problems in the order of their numbers.
const std::vector<CollectedProblem>& HockSchittkowski();

}  // namespace support
