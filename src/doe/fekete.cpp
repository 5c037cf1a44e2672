#include "doe/fekete.h"

#include <cmath>
#include <limits>

namespace corvath::math {
namespace {

using Eigen::ArrayXd;
using Eigen::Index;
using Eigen::MatrixXd;
using Eigen::VectorXd;

/// Nearest-neighbour distances of a set of points.
struct Spacing {
  double smallest;
  double spread;  ///< (b - a) / (b + a) of the smallest a and the largest b
};

Spacing Measure(const MatrixXd& points) {
  double smallest = std::numeric_limits<double>::infinity();
  double largest = 0.0;
  for (Index i = 0; i < points.cols(); ++i) {
    ArrayXd squared = (points.colwise() - points.col(i)).colwise().squaredNorm().transpose();
    squared(i) = std::numeric_limits<double>::infinity();
    const double nearest = std::sqrt(squared.minCoeff());
    smallest = std::min(smallest, nearest);
    largest = std::max(largest, nearest);
  }
  return {smallest, (largest - smallest) / (largest + smallest)};
}

MatrixXd RandomDirections(Engine& engine, Index n, Index d) {
  MatrixXd points(d, n);
  for (Index i = 0; i < n; ++i) {
    for (Index k = 0; k < d; ++k) points(k, i) = DrawUniform(engine, -1.0, 1.0);
    if (const double length = points.col(i).norm(); length > 0.0) points.col(i) /= length;
  }
  return points;
}

/// Moves each point away from the others, which pull with 1 / distance^4 of their position.
void Repel(double step, MatrixXd& points) {
  for (Index i = 0; i < points.cols(); ++i) {
    ArrayXd weights = (points.colwise() - points.col(i)).colwise().squaredNorm().transpose();
    weights = weights.square().inverse();
    weights(i) = 0.0;
    VectorXd force = points * weights.matrix();
    if (const double length = force.norm(); length > 0.0)
      force /= length;
    else
      force.setOnes();
    points.col(i) = ((1.0 + step) * points.col(i) - step * force).normalized();
  }
}

}  // namespace

MatrixXd FeketePoints(Engine& engine, Index n, Index d) {
  constexpr int kPasses = 500;
  constexpr double kBetter = 1.00000001;
  MatrixXd points = RandomDirections(engine, n, d);
  if (d == 1) {
    for (Index i = 1; i < n; ++i) points(0, i) = -points(0, i - 1);
    return points;
  }
  if (n < 2) return points;  // nothing to be repelled from
  double step = 1.0;
  int since_better = 0;
  double threshold = Measure(points).smallest * kBetter;
  for (int pass = 0; pass < kPasses; ++pass) {
    ++since_better;
    Repel(step, points);
    const Spacing spacing = Measure(points);
    if (spacing.smallest > threshold) {
      step /= std::sqrt(since_better);
      since_better = 0;
      threshold = spacing.smallest * kBetter;
    }
    if (pass == 50 && step > 0.5) step /= 2.0;
    if (spacing.spread < 0.01 && pass > 100) break;
  }
  return points;
}

}  // namespace corvath::math
