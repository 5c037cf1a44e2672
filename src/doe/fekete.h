#pragma once

#include "doe/random_draws.h"

#include <Eigen/Core>

namespace corvath::math {

/// n points on the unit sphere of d dimensions, one column each, moved apart by a repulsion that
/// falls with the cube of the distance, until nearest neighbours are about equally far or for 500
/// passes of n^2 d steps. In one dimension they alternate between the two points of the sphere.
Eigen::MatrixXd FeketePoints(Engine& engine, Eigen::Index n, Eigen::Index d);

}  // namespace corvath::math
