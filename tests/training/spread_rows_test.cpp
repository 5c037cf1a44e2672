#include "training/spread_rows.h"

#include "support/points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace corvath::training {
namespace {

TEST(SpreadRows, StandForAllWherePointsAreDenseAndWhereTheyAreThin) {
  // Density 2x in the first input: a spread choice keeps it, to within a cell.
  Eigen::MatrixXd points = support::UniformPoints(5000, 2, 1);
  points.col(0) = points.col(0).cwiseSqrt();
  const std::vector<Eigen::Index> rows = SpreadRows(points, 400);
  ASSERT_EQ(rows.size(), 400u);
  EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end()));
  EXPECT_EQ(std::adjacent_find(rows.begin(), rows.end()), rows.end());
  for (const double limit : {0.25, 0.5, 0.75}) {
    const auto below = std::count_if(rows.begin(), rows.end(),
                                     [&](Eigen::Index row) { return points(row, 0) < limit; });
    // A random choice deviates by 8 rows (sd) at 0.5.
    EXPECT_NEAR(static_cast<double>(below), 400.0 * limit * limit, 12.0) << limit;
  }
  // Every point has a chosen one near: cells of 1/400 of the points, some 0.07 wide.
  double farthest = 0.0;
  for (const auto& point : points.rowwise()) {
    double nearest = HUGE_VAL;
    for (const Eigen::Index row : rows)
      nearest = std::min(nearest, (points.row(row) - point).norm());
    farthest = std::max(farthest, nearest);
  }
  EXPECT_LT(farthest, 0.3);
}

TEST(SpreadRows, FewOrCoincidingRows) {
  EXPECT_EQ(SpreadRows(support::UniformPoints(3, 2, 1), 5), (std::vector<Eigen::Index>{0, 1, 2}));
  EXPECT_EQ(SpreadRows(Eigen::MatrixXd::Zero(100, 2), 10).size(), 10u);
  EXPECT_TRUE(SpreadRows(Eigen::MatrixXd(0, 2), 10).empty());
}

}  // namespace
}  // namespace corvath::training
