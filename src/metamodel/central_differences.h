#pragma once

#include "metamodel/types.h"

#include <functional>

namespace corvath::math::metamodel {

/// Central differences of `f`, which takes n x m points to n values, at each row of `points`
/// (n x m): n x m, in units of f per unit of input. Blocks of rows bound the memory of the copies.
/// @param steps  m: how far to each side; an input with step 0 has gradient 0
Eigen::MatrixXd CentralDifferences(const std::function<Eigen::VectorXd(const ConstPoints&)>& f,
                                   const ConstPoints& points, const Eigen::VectorXd& steps);

}  // namespace corvath::math::metamodel
