#include "doe/box_behnken.h"
#include "doe/doe.h"
#include "support/testing.h"

namespace {

using namespace corvath::math;
using Eigen::VectorXd;
using Rows = DOE::Designs;

Rows Build(int type, std::uint64_t d, std::uint64_t level, StateLists lists = {}) {
  DOE doe(d, 1, std::move(lists));
  doe.Build(type, level, false);
  return doe.GetDesigns();
}

VectorXd States(std::initializer_list<double> states) {
  return Eigen::Map<const VectorXd>(states.begin(), static_cast<Eigen::Index>(states.size()));
}

TEST(Factorial, SmallSchemesGiveTheirPointsInOrder) {
  EXPECT_EQ(Build(kCenterPoint, 3, 1), (Rows{{0, 0, 0}}));
  EXPECT_EQ(Build(kFullFactorial, 2, 2), (Rows{{-1, -1}, {1, -1}, {-1, 1}, {1, 1}}));
  const Rows cube = Build(kFullFactorial, 3, 3);
  EXPECT_EQ(cube[0], (std::vector<double>{-1, -1, -1}));
  EXPECT_EQ(cube[1], (std::vector<double>{0, -1, -1}));
  EXPECT_EQ(std::set<std::vector<double>>(cube.begin(), cube.end()).size(), 27U);
  EXPECT_EQ(Build(kAxialPoints, 2, 2), (Rows{{0, 0}, {0, 0.5}, {0, 1}, {0.5, 0}, {1, 0}}));
  EXPECT_EQ(Build(kStarPoints, 2, 1), (Rows{{-1, 0}, {0, -1}, {0, 0}, {0, 1}, {1, 0}}));
  EXPECT_EQ(Build(kStarPoints, 1, 2), (Rows{{-1}, {-0.5}, {0}, {0.5}, {1}}));
  EXPECT_EQ(Build(kKoshal, 2, 1), (Rows{{0, 0}, {0, 1}, {1, 0}}));
  EXPECT_EQ(Build(kKoshal, 2, 2), (Rows{{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {0, 0}, {1, 1}}));
  const Rows koshal = Build(kKoshal, 3, 2);
  EXPECT_EQ(Rows(koshal.end() - 3, koshal.end()), (Rows{{1, 1, 0}, {1, 0, 1}, {0, 1, 1}}));
  EXPECT_EQ(Build(kCentralComposite, 2, 2),
            (Rows{{-1, 0}, {1, 0}, {0, -1}, {0, 1}, {0, 0}, {-1, -1}, {1, -1}, {-1, 1}, {1, 1}}));
  EXPECT_EQ(Build(kMixedTerms, 3, 2), (Rows{{1, 1, 0}, {1, 0, 1}, {0, 1, 1}}));
  const Rows box = Build(kBoxBehnken, 3, 0);
  EXPECT_EQ(Rows(box.begin(), box.begin() + 5),
            (Rows{{-1, -1, 0}, {-1, 1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 0, -1}}));
  EXPECT_EQ(box.back(), (std::vector<double>{0, 0, 0}));
  EXPECT_TRUE(Build(kFullFactorial, 2, 1).empty());
  EXPECT_TRUE(Build(kAxialPoints, 2, 0).empty());
  EXPECT_TRUE(Build(kStarPoints, 2, 0).empty());
  EXPECT_TRUE(Build(kMixedTerms, 2, 1).empty());
}

TEST(Factorial, BuildsAsManyPointsAsItCounts) {
  const StateLists lists = {{}, States({-2, 0, 2}), States({-3, -2, -1, 0, 1, 2, 3}), {}};
  for (const int type :
       {kCenterPoint, kFullFactorial, kAxialPoints, kStarPoints, kKoshal, kCentralComposite,
        kMixedTerms, kKoshalLinear, kKoshalQuadratic, kBoxBehnken, kFullCombinatorial})
    for (const StateLists& states : {StateLists{}, lists})
      for (const std::uint64_t level : {2U, 3U, 5U}) {
        if (level > 2 && (type == kKoshal || type == kMixedTerms)) continue;
        EXPECT_EQ(Build(type, 4, level, states).size(), NumDesigns(type, 4, level, states))
            << type << ' ' << level << ' ' << states.size();
      }
}

TEST(Factorial, TakesStatesNearEquallySpacedOnes) {
  // One dimension, so that the points are the levels.
  const std::tuple<int, std::uint64_t, VectorXd, Rows> cases[] = {
      {kFullFactorial, 3, States({-4, -3, 0.5, 2, 9}), {{-4}, {0.5}, {9}}},
      {kFullFactorial, 3, States({-4, -3, -2, 2, 9}), {{-4}, {-2}, {9}}},  // none below 1
      {kFullFactorial, 3, States({-4, -1, 1, 9}), {{-4}, {1}, {9}}},
      {kFullFactorial, 4, States({0, 1, 4, 5, 9}), {{0}, {4}, {5}, {9}}},  // near 3 and 6
      {kFullFactorial, 4, States({0, 1, 2, 30, 31, 90}), {{0}, {30}, {31}, {90}}},
      {kFullFactorial, 4, States({0, 1, 3, 4.5, 6}), {{0}, {1}, {4.5}, {6}}},  // 2 is between two
      {kKoshal, 2, States({0, 5}), {{0}, {0}, {5}}},  // from the beginning again
      {kFullFactorial, 9, States({3, 5, 8}), {{3}, {5}, {8}}},
      {kFullFactorial, 2, States({7}), {{7}}},
      {kAxialPoints, 2, States({0, 1, 4, 5, 9}), {{4}, {5}, {9}}},
      {kAxialPoints, 7, States({3, 5, 8}), {{3}, {5}, {8}}},
      {kStarPoints, 1, States({-1, 0, 1}), {{-1}, {0}, {1}}},
      {kStarPoints, 4, States({0, 5}), {{0}, {5}}},
      {kCenterPoint, 1, States({-3, -2, 5}), {{-2}}},
  };
  for (const auto& [type, level, states, points] : cases)
    EXPECT_EQ(Build(type, 1, level, {states}), points) << type << ' ' << states.transpose();
  EXPECT_EQ(Build(kFullCombinatorial, 2, 0, {States({1, 2}), States({3, 4, 5})}),
            (Rows{{1, 3}, {2, 3}, {1, 4}, {2, 4}, {1, 5}, {2, 5}}));
  // The centre of a star takes the state of the smallest magnitude, wherever it stands.
  EXPECT_EQ(Build(kStarPoints, 2, 1, {States({0, 5, 9}), States({0, 5, 9})}),
            (Rows{{0, 0}, {0, 5}, {0, 9}, {5, 0}, {9, 0}}));
  // A single state has no second level.
  EXPECT_EQ(Build(kMixedTerms, 2, 2, {States({7}), {}}), (Rows{{7, 1}}));
}

TEST(Factorial, SortsAndReducesEarlierDesignsToo) {
  DOE doe(Eigen::MatrixXd{{1, 0}, {-5, 2}, {-5, 2}}, 1);
  doe.Build(kAxialPoints, 1, true);
  EXPECT_EQ(doe.GetDesigns(), (Rows{{-5, 2}, {0, 0}, {0, 1}, {1, 0}}));
  doe.Build(kFullFactorial, 2, true);
  EXPECT_EQ(doe.GetDesigns().size(), 8U);
}

TEST(BoxBehnken, IsOrthogonalAndBalanced) {
  for (std::uint64_t d = 3; d <= 17; ++d) {
    const auto rows = BoxBehnken(d, false);
    EXPECT_EQ(rows.size(), CountBoxBehnken(d));
    Eigen::MatrixXd x(rows.size(), d);
    for (std::size_t i = 0; i < rows.size(); ++i)
      for (std::size_t k = 0; k < d; ++k)
        x(static_cast<Eigen::Index>(i), static_cast<Eigen::Index>(k)) = rows[i][k] - 2.0;
    EXPECT_EQ(x.colwise().sum().cwiseAbs().maxCoeff(), 0.0) << d;
    const Eigen::MatrixXd products = x.transpose() * x;
    EXPECT_TRUE(products.isDiagonal(0.0)) << d;
    EXPECT_EQ(x.bottomRows(1).cwiseAbs().maxCoeff(), 0.0);
    // Each row but the centre has as many factors at an end as its block has.
    const Eigen::VectorXd ends = x.cwiseAbs().rowwise().sum();
    EXPECT_EQ(ends.head(ends.size() - 1).minCoeff(), ends.maxCoeff()) << d;
    if (d != 11) continue;
    // Here the blocks have a half of all signs: those with a positive product.
    for (Eigen::Index i = 0; i + 1 < x.rows(); ++i)
      EXPECT_EQ((x.row(i).array() == -1.0).count() % 2, 0) << x.row(i);
  }
  const std::size_t centres[][2] = {{4, 3}, {5, 6}, {7, 6}, {8, 8}, {10, 10}, {11, 12}, {16, 12}};
  for (const auto& [d, count] : centres)
    EXPECT_EQ(BoxBehnken(d, true).size(), CountBoxBehnken(d) - 1 + count);
}

}  // namespace
