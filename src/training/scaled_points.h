#pragma once

#include <Eigen/Core>

namespace corvath::training {

/// Each input to [-1, 1], a constant one to 0: what regressions for screening work on.
inline Eigen::MatrixXd ScaledPoints(Eigen::MatrixXd points) {
  for (auto column : points.colwise()) {
    const double lower = column.minCoeff();
    const double range = column.maxCoeff() - lower;
    if (range > 0.0)
      column = (2.0 * (column.array() - lower) / range - 1.0).matrix();
    else
      column.setZero();
  }
  return points;
}

}  // namespace corvath::training
