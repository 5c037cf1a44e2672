#pragma once

#include <Eigen/Core>

#include <algorithm>
#include <cmath>

namespace corvath::algorithm::optimizer {

/// Equality under which a NaN equals a NaN.
inline bool SameValue(double a, double b) {
  return a == b || (std::isnan(a) && std::isnan(b));
}

/// Same shape and same values.
template <class Matrix>
bool SameValues(const Matrix& a, const Matrix& b) {
  return a.rows() == b.rows() && a.cols() == b.cols() &&
         std::equal(a.data(), a.data() + a.size(), b.data(), SameValue);
}

}  // namespace corvath::algorithm::optimizer
