#pragma once

#include "doe/random_draws.h"

#include <Eigen/Core>

namespace corvath::math {

/// Exchanges entries within columns of all rows but the first `fixed` ones until the correlations
/// of the columns are small: until 10 times the mean of their squares is at most tolerance^2, for
/// at most 500 passes of 500 random exchanges each. A constant column takes no part.
Eigen::MatrixXd LowerCorrelations(Engine engine, Eigen::MatrixXd points, Eigen::Index fixed,
                                  double tolerance);

}  // namespace corvath::math
