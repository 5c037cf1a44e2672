#pragma once

#include <Eigen/Core>

namespace corvath::math::metamodel {

/// How far support points reach when errors and density of a prediction are estimated, in
/// transformed coordinates. 0 where there is no distance to measure.
struct ErrorRadii {
  double density = 0.0;
  double local_error = 0.0;

  /// Of the points (N x r): mean distances to the (2 r + 1)-th and to the 50th nearest, the point
  /// itself counted as the first; but at least a tenth and the whole of the largest gap between
  /// neighbours in any one coordinate. O(N^2 r) time.
  static ErrorRadii Of(const Eigen::MatrixXd& points);
};

}  // namespace corvath::math::metamodel
