#pragma once

#include <Eigen/Core>

#include <cmath>

/// Comparison of stored figures, in which NaN stands for a figure that was not computed: two NaNs
/// are the same, so that a copy always equals its original.
namespace corvath::math::metamodel {

/// Equal, or both NaN.
inline bool SameFigure(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

/// Same shape and same entries, in this order.
template <class Matrix>
bool SameFigures(const Matrix& a, const Matrix& b) {
  if (a.rows() != b.rows() || a.cols() != b.cols()) return false;
  for (Eigen::Index col = 0; col < a.cols(); ++col)
    for (Eigen::Index row = 0; row < a.rows(); ++row)
      if (!SameFigure(a(row, col), b(row, col))) return false;
  return true;
}

}  // namespace corvath::math::metamodel
