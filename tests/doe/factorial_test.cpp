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

// Points of small schemes stand in schemes.txt.
TEST(Factorial, LargerSchemesBeginAndEndInOrder) {
  const Rows cube = Build(kFullFactorial, 3, 3);
  EXPECT_EQ(cube[0], (std::vector<double>{-1, -1, -1}));
  EXPECT_EQ(cube[1], (std::vector<double>{0, -1, -1}));
  EXPECT_EQ(std::set<std::vector<double>>(cube.begin(), cube.end()).size(), 27U);
  const Rows koshal = Build(kKoshal, 3, 2);
  EXPECT_EQ(Rows(koshal.end() - 3, koshal.end()), (Rows{{1, 1, 0}, {1, 0, 1}, {0, 1, 1}}));
  const Rows box = Build(kBoxBehnken, 3, 0);
  EXPECT_EQ(Rows(box.begin(), box.begin() + 5),
            (Rows{{-1, -1, 0}, {-1, 1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 0, -1}}));
  EXPECT_EQ(box.back(), (std::vector<double>{0, 0, 0}));
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
    EXPECT_EQ(products.diagonal().minCoeff(), products.diagonal().maxCoeff()) << d;
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
