#include "metamodel/moving_least_squares/radius_range.h"

#include "stochastics/sample_statistics.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::math::metamodel {

std::optional<RadiusRange> FindRadiusRange(const Eigen::MatrixXd& points,
                                           const Eigen::MatrixXd& squared_distances) {
  constexpr double kCoincident = 1e-24;
  const double largest = squared_distances.maxCoeff();
  if (!(largest > kCoincident)) return std::nullopt;
  double smallest = statistics::SmallestSignificant(squared_distances);
  for (const double gap : statistics::SmallestGaps(points))
    if (gap < std::numeric_limits<double>::max()) smallest = std::max(smallest, gap * gap);
  RadiusRange range;
  range.diameter = std::sqrt(largest);
  range.smallest = std::max(range.diameter * 0.001, std::sqrt(smallest));
  const double gap = statistics::LargestGaps(points).maxCoeff();
  if (gap > 2.0 * range.smallest) range.smallest = 0.5 * gap;
  return range;
}

}  // namespace corvath::math::metamodel
