#pragma once

#include <cmath>

namespace corvath::math {

/// Comparison of stored figures, in which NaN stands for a figure that was not computed: two NaNs
/// are the same, so that a copy always equals its original.
inline bool SameFigure(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

/// Same shape and same entries, in this order. For dense matrices and vectors of Eigen.
template <class Matrix>
bool SameFigures(const Matrix& a, const Matrix& b) {
  if (a.rows() != b.rows() || a.cols() != b.cols()) return false;
  for (decltype(a.cols()) col = 0; col < a.cols(); ++col)
    for (decltype(a.rows()) row = 0; row < a.rows(); ++row)
      if (!SameFigure(a(row, col), b(row, col))) return false;
  return true;
}

}  // namespace corvath::math
