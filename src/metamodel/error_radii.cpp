#include "metamodel/error_radii.h"

#include "stochastics/sample_statistics.h"

#include <algorithm>

namespace corvath::math::metamodel {

ErrorRadii ErrorRadii::Of(const Eigen::MatrixXd& points) {
  if (points.rows() == 0 || points.cols() == 0) return {};
  const Eigen::Index nearest = 2 * points.cols() + 1;
  const Eigen::Index local = std::min<Eigen::Index>(points.rows(), 50);
  const double gap = statistics::LargestGaps(points).maxCoeff();
  return {std::max(statistics::KthNearest(points, nearest).mean(), 0.1 * gap),
          std::max(statistics::KthNearest(points, local).mean(), gap)};
}

}  // namespace corvath::math::metamodel
