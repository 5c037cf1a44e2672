#pragma once

#include "metamodel/types.h"

#include <stdexcept>

namespace corvath::math::metamodel {

/// `subsets`, or one group per point when it is empty.
/// @throws std::logic_error  `subsets` is neither empty nor of size `num_points`
inline IndexVector GroupsOrPoints(const IndexVector& subsets, Eigen::Index num_points) {
  if (subsets.size() == num_points) return subsets;
  if (subsets.size() != 0) throw std::logic_error("subset vector has wrong length");
  IndexVector groups(num_points);
  for (Eigen::Index i = 0; i < num_points; ++i) groups(i) = static_cast<std::uint64_t>(i);
  return groups;
}

/// Column i of `weights` (N x n) belongs to point `begin` + i: its own group weighs nothing there.
inline void RemoveGroups(const IndexVector& groups, Eigen::Index begin,
                         Eigen::Ref<Eigen::MatrixXd> weights) {
  for (Eigen::Index i = 0; i < weights.cols(); ++i) {
    const std::uint64_t own = groups(begin + i);
    for (Eigen::Index j = 0; j < weights.rows(); ++j)
      if (groups(j) == own) weights(j, i) = 0.0;
  }
}

}  // namespace corvath::math::metamodel
