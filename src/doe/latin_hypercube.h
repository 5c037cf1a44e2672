#pragma once

#include "doe/random_draws.h"

#include <Eigen/Core>

namespace corvath::math {

/// n points in [-1, 1]^d, one row each, such that every column has one number in each of n equal
/// intervals: at random in it, or in its middle.
/// M. D. McKay, R. J. Beckman, W. J. Conover, "A comparison of three methods for selecting values
/// of input variables in the analysis of output from a computer code", Technometrics 21, 1979,
/// pp. 239-245.
Eigen::MatrixXd LatinHypercube(Engine& engine, Eigen::Index n, Eigen::Index d, bool midpoints);

/// Middle of the interval `rank` (from 0) of n equal ones of [-1, 1].
inline double IntervalMidpoint(Eigen::Index rank, Eigen::Index n) {
  return static_cast<double>(2 * rank + 1) / static_cast<double>(n) - 1.0;
}

}  // namespace corvath::math
