#include "training/cross_validation.h"

#include "support/points.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

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
  Eigen::MatrixXd points(4, 2);
  points << 1.0, 0.5, 2.0, 0.5, 1.0, 0.5, 3.0, 0.7;
  const ResponseData data = MakeResponseData(points, Eigen::Vector4d(1, 2, 3, 4), 2, 1);
  EXPECT_EQ(data.num_levels, (std::vector<std::size_t>{3, 2}));
}

}  // namespace
}  // namespace corvath::training
