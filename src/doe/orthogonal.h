#pragma once

#include "doe/random_draws.h"

#include <Eigen/Core>

#include <cstdint>

namespace corvath::math {

/// A midpoint Latin hypercube of n points in [-1, 1]^d, one row each, with small correlations
/// between its columns; see DOE::BuildOrthogonal.
Eigen::MatrixXd OrthogonalLatinHypercube(Engine& engine, Eigen::Index n, Eigen::Index d,
                                         std::uint64_t trials, double tolerance);

}  // namespace corvath::math
