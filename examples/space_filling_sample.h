#pragma once

#include <Eigen/Core>

#include <cstdint>

namespace examples {

/// A Latin hypercube of `n` points in [0, 1]^d (n x d) whose smallest distance between two points
/// is large: the best of many random exchanges inside columns, as in M. D. Morris and
/// T. J. Mitchell, "Exploratory designs for computational experiments", Journal of Statistical
/// Planning and Inference 43 (1995), pp. 381-402. The same seed gives the same sample everywhere.
Eigen::MatrixXd SpaceFillingSample(Eigen::Index n, Eigen::Index d, std::uint32_t seed);

}  // namespace examples
