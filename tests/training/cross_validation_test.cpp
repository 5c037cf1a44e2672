#include "training/cross_validation.h"

#include "support/points.h"
#include "support/testing.h"
#include "training/spread_rows.h"

namespace corvath::training {
namespace {

TEST(CrossValidation, GroupsAreEvenRepeatableAndKeepRepeatedPointsTogether) {
  Eigen::MatrixXd points = support::UniformPoints(43, 3, 1);
  const auto groups = MakeGroups(points, 10, 7);
  std::map<std::uint64_t, int> sizes;
  for (const std::uint64_t group : groups) ++sizes[group];
  EXPECT_EQ(sizes.size(), 10u);
  for (const auto& [group, size] : sizes) {
    EXPECT_LT(group, 10u);
    EXPECT_TRUE(size == 4 || size == 5) << size;
  }
  EXPECT_EQ(MakeGroups(points, 10, 7), groups);
  EXPECT_NE(MakeGroups(points, 10, 8), groups);

  for (const Eigen::Index i : {7, 11, 42}) points.row(i) = points.row(3);
  const auto repeated = MakeGroups(points, 40, 7);
  for (const Eigen::Index i : {7, 11, 42}) EXPECT_EQ(repeated(i), repeated(3));
  EXPECT_EQ(std::set<std::uint64_t>(repeated.begin(), repeated.end()).size(), 40u);
  const auto few = MakeGroups(points.topRows(5), 10, 7);
  EXPECT_EQ(std::set<std::uint64_t>(few.begin(), few.end()).size(), 5u) << "one for each point";
}

TEST(CrossValidation, ARandomOrderIsTheSameOnEveryMachine) {
  // Worked out by hand from the first numbers of the engine, which its standard fixes:
  // 3499211612, 581869302, 3890346734 for the seed 5489 (the shuffle goes from the last place).
  const Eigen::MatrixXd points = Eigen::VectorXd::LinSpaced(4, 0.0, 3.0);
  // 4 places: 3499211612 * 4 >> 32 = 3; 3: 581869302 * 3 >> 32 = 0; 2: 3890346734 * 2 >> 32 = 1.
  // 0 1 2 3 -> 0 1 2 3 -> 2 1 0 3 -> 2 1 0 3.
  const math::metamodel::IndexVector groups = MakeGroups(points, 4, 5489);
  EXPECT_EQ(groups(0), 2u);
  EXPECT_EQ(groups(1), 1u);
  EXPECT_EQ(groups(2), 0u);
  EXPECT_EQ(groups(3), 3u);
}

TEST(CrossValidation, CountsDifferentValuesOfInputs) {
  Eigen::MatrixXd points{{1.0, 0.5}, {2.0, 0.5}, {1.0, 0.5}, {3.0, 0.7}};
  const ResponseData data = MakeResponseData(points, Eigen::Vector4d(1, 2, 3, 4), 2, 1);
  EXPECT_EQ(data.num_levels, (std::vector<std::size_t>{3, 2}));
}

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
