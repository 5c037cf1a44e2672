#pragma once

#include "foundation/exception.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"
#include "metamodel/thin_plate_splines.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"
#include "support/points.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

/// All families of models with their parts, for tests that take several of them.
namespace corvath::math::metamodel {

/// Scales to the unit cube of `range`, the default coordinate transform.
inline Eigen::MatrixXd Scaled(const Eigen::MatrixXd& points, const Eigen::MatrixXd& range) {
  const Eigen::RowVectorXd low = range.colwise().minCoeff();
  const Eigen::RowVectorXd width = range.colwise().maxCoeff() - low;
  return (points.rowwise() - low).array().rowwise() / width.array();
}

}  // namespace corvath::math::metamodel
