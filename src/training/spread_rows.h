#pragma once

#include <Eigen/Core>

#include <vector>

namespace corvath::training {

/// Rows of `points` (n x m) that stand for all: one from each of `count` cells with equally many
/// points, made by halving at the median of the input that spreads most in the cell. So they fill
/// the space as the points do, and those that are left look like those that were taken: a choice of
/// the farthest points would leave the easy ones to judge by. In rising order; all rows if there are
/// no more. O(n m log n), the same on every machine.
std::vector<Eigen::Index> SpreadRows(const Eigen::MatrixXd& points, Eigen::Index count);

}  // namespace corvath::training
