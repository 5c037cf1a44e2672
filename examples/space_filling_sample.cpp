#include "space_filling_sample.h"

#include <cmath>
#include <random>
#include <utility>
#include <vector>

namespace examples {
namespace {

/// std::uniform_real_distribution may differ between standard libraries.
double Uniform(std::mt19937& random) {
  return (static_cast<double>(random()) + 0.5) / 4294967296.0;
}

Eigen::Index Below(std::mt19937& random, Eigen::Index n) {
  return static_cast<Eigen::Index>(Uniform(random) * static_cast<double>(n));
}

/// What point `i` adds to Morris and Mitchell's criterion: sum of the distances to the power -p.
double Crowding(const Eigen::MatrixXd& points, Eigen::Index i) {
  constexpr double kHalfPower = 7.5;  // p = 15
  double sum = 0.0;
  for (Eigen::Index j = 0; j < points.rows(); ++j)
    if (j != i) sum += std::pow((points.row(i) - points.row(j)).squaredNorm(), -kHalfPower);
  return sum;
}

}  // namespace

Eigen::MatrixXd SpaceFillingSample(Eigen::Index n, Eigen::Index d, std::uint32_t seed) {
  constexpr int kExchanges = 30000;
  std::mt19937 random(seed);
  Eigen::MatrixXd points(n, d);
  for (Eigen::Index k = 0; k < d; ++k) {
    for (Eigen::Index i = 0; i < n; ++i)
      points(i, k) = (static_cast<double>(i) + 0.5) / static_cast<double>(n);
    for (Eigen::Index i = n - 1; i > 0; --i)
      std::swap(points(i, k), points(Below(random, i + 1), k));
  }
  for (int step = 0; step < kExchanges; ++step) {
    const Eigen::Index k = Below(random, d);
    const Eigen::Index i = Below(random, n);
    const Eigen::Index j = Below(random, n);
    if (i == j) continue;
    const double before = Crowding(points, i) + Crowding(points, j);
    std::swap(points(i, k), points(j, k));
    if (Crowding(points, i) + Crowding(points, j) > before) std::swap(points(i, k), points(j, k));
  }
  return points;
}

}  // namespace examples
