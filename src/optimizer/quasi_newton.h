#pragma once

#include "optimizer/vector_view.h"

#include <Eigen/Core>

namespace corvath::algorithm::optimizer {

/// BFGS update of the matrix B of the quadratic model, damped so that it stays positive definite:
/// M. J. D. Powell, "A fast algorithm for nonlinearly constrained optimization calculations",
/// Lecture Notes in Mathematics 630, 1978, pp. 144-157.
///
/// @param b     n x n, symmetric, both triangles
/// @param step  s, the change of x
/// @param y     change of the gradient of the Lagrangian; damped on return
/// @param work  n; B s on return
/// @return false if the damped curvature underflows; nothing is updated then
bool UpdateDampedBfgs(Eigen::Ref<Eigen::MatrixXd> b, const VectorView& step,
                      Eigen::Ref<Eigen::VectorXd> y, Eigen::Ref<Eigen::VectorXd> work);

}  // namespace corvath::algorithm::optimizer
