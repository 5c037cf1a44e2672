#pragma once

#include <Eigen/Core>

#include <optional>

namespace corvath::math::metamodel {

/// Between which lengths a kernel radius is worth a search.
struct RadiusRange {
  double smallest;  ///< a radius that still reaches a neighbour
  double diameter;  ///< largest distance of two points
};

/// The range for the rows of `points`, whose matrix of squared distances is `squared_distances`;
/// none when they all coincide.
std::optional<RadiusRange> FindRadiusRange(const Eigen::MatrixXd& points,
                                           const Eigen::MatrixXd& squared_distances);

}  // namespace corvath::math::metamodel
