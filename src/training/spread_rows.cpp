#include "training/spread_rows.h"

#include "doe/random_draws.h"
#include "training/scaled_points.h"

#include <algorithm>
#include <numeric>

namespace corvath::training {
namespace {

using Rows = std::vector<Eigen::Index>;

/// Takes `count` of the rows between `begin` and `end`.
void Take(const Eigen::MatrixXd& scaled, Rows::iterator begin, Rows::iterator end,
          Eigen::Index count, math::Engine& engine, Rows& taken) {
  const auto size = end - begin;
  if (count <= 0) return;
  if (count == 1) {
    taken.push_back(begin[static_cast<std::ptrdiff_t>(
        (static_cast<std::uint64_t>(engine()) * static_cast<std::uint64_t>(size)) >> 32)]);
    return;
  }
  Eigen::Index widest = 0;
  double spread = -1.0;
  for (Eigen::Index j = 0; j < scaled.cols(); ++j) {
    double lower = 1.0, upper = -1.0;
    for (auto row = begin; row != end; ++row) {
      lower = std::min(lower, scaled(*row, j));
      upper = std::max(upper, scaled(*row, j));
    }
    if (upper - lower > spread) {
      spread = upper - lower;
      widest = j;
    }
  }
  const Eigen::Index left = count / 2;
  const auto middle = begin + size * left / count;
  std::nth_element(begin, middle, end, [&](Eigen::Index a, Eigen::Index b) {
    return scaled(a, widest) != scaled(b, widest) ? scaled(a, widest) < scaled(b, widest) : a < b;
  });
  Take(scaled, begin, middle, left, engine, taken);
  Take(scaled, middle, end, count - left, engine, taken);
}

}  // namespace

Rows SpreadRows(const Eigen::MatrixXd& points, Eigen::Index count) {
  Rows rows(static_cast<std::size_t>(points.rows()));
  std::iota(rows.begin(), rows.end(), Eigen::Index{0});
  if (count >= points.rows()) return rows;
  Rows taken;
  math::Engine engine(1);
  Take(ScaledPoints(points), rows.begin(), rows.end(), count, engine, taken);
  std::sort(taken.begin(), taken.end());
  return taken;
}

}  // namespace corvath::training
