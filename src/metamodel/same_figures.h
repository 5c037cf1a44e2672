#pragma once

#include <Eigen/Core>

#include <cmath>

/// Comparison of stored figures, in which NaN stands for a figure that was not computed.
namespace corvath::math::metamodel {

inline bool SameFigure(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

inline bool SameFigures(const Eigen::VectorXd& a, const Eigen::VectorXd& b) {
  if (a.size() != b.size()) return false;
  for (Eigen::Index i = 0; i < a.size(); ++i)
    if (!SameFigure(a(i), b(i))) return false;
  return true;
}

}  // namespace corvath::math::metamodel
