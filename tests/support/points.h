#pragma once

#include "literature/uniform_points.h"

#include <Eigen/Core>

#include <cmath>

namespace support {

using literature::UniformPoints, literature::UniformVector;

/// Largest difference of two matrices of one shape, relative to the larger magnitude of `b` or 1;
/// infinite for different shapes or when NaNs stand in different places.
inline double Deviation(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
  if (a.rows() != b.rows() || a.cols() != b.cols()) return HUGE_VAL;
  double largest = 0.0;
  double scale = 1.0;
  for (Eigen::Index i = 0; i < a.size(); ++i) {
    const double x = a.data()[i];
    const double y = b.data()[i];
    if (x == y || (std::isnan(x) && std::isnan(y))) continue;
    if (!(std::abs(x - y) < HUGE_VAL)) return HUGE_VAL;
    largest = std::max(largest, std::abs(x - y));
    scale = std::max(scale, std::abs(y));
  }
  return largest / scale;
}

}  // namespace support
