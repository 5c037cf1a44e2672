#include "training/forward_selection.h"

#include "support/points.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;

/// Inputs 4 and 1 of six matter, 4 more; 1 by its product with 4 alone.
ResponseData ProductData() {
  const Eigen::MatrixXd points = 2.0 * support::UniformPoints(60, 6, 1).array() - 1.0;
  const Eigen::VectorXd values = points.col(4).array() * (2.0 + points.col(1).array()) +
                                 0.01 * support::UniformVector(60, 2).array();
  return MakeResponseData(points, values, 20, 1);
}

TEST(ForwardSelection, TakesInputsInByWhatTheyExplainTogether) {
  const auto steps = SelectForward(ProductData(), /*adjusted=*/true, 0.95);
  ASSERT_EQ(steps.size(), 2u) << "the others explain noise";
  EXPECT_EQ(steps[0].inputs, (BitVector{false, false, false, false, true, false}));
  EXPECT_EQ(steps[1].inputs, (BitVector{false, true, false, false, true, false}));
  // Var(2 x4) = 4/3 beside Var(x1 x4) = 1/9: 12/13, give or take the sample.
  EXPECT_NEAR(steps[0].determination, 12.0 / 13.0, 0.05);
  EXPECT_NEAR(steps[1].determination, 1.0, 1e-3);
}

TEST(ForwardSelection, EndsWithTheDesigns) {
  const ResponseData data =
      MakeResponseData(support::UniformPoints(20, 8, 3), support::UniformVector(20, 4), 10, 1);
  // 1 + 2, + 3, + 4 coefficients are 10 of 20; five more are not.
  EXPECT_EQ(SelectForward(data, false, 0.0).size(), 3u);
  const ResponseData few =
      MakeResponseData(support::UniformPoints(5, 2, 3), support::UniformVector(5, 4), 5, 1);
  EXPECT_TRUE(SelectForward(few, true, 0.95).empty());
}

TEST(ForwardSelection, SignificanceIsThatOfAnFTest) {
  // Of noise it is uniform: of 400 inputs as many lie below each level as it says, within four
  // standard deviations of a binomial count.
  const Eigen::MatrixXd points = support::UniformPoints(30, 400, 5);
  const Eigen::VectorXd noise = support::UniformVector(30, 6);
  const Eigen::VectorXd significances = SignificancesOfInputs(points, noise, BitVector(400, false));
  for (const double level : {0.1, 0.5, 0.9}) {
    const auto below = static_cast<double>((significances.array() < level).count());
    EXPECT_NEAR(below, 400.0 * level, 4.0 * std::sqrt(400.0 * level * (1.0 - level)));
  }
}

TEST(ForwardSelection, SeesProductsWithPartnersAndTheirSquares) {
  const Eigen::MatrixXd points = 2.0 * support::UniformPoints(80, 5, 7).array() - 1.0;
  const Eigen::VectorXd values = points.col(0).array() * (points.col(3).array().square() - 0.333);
  const auto significance = [&](BitVector partners) {
    return SignificancesOfInputs(points, values, partners);
  };
  EXPECT_LT(significance({false, false, false, false, false})(0), 0.999);
  const Eigen::VectorXd with = significance({false, false, false, true, false});
  EXPECT_GT(with(0), 1.0 - 1e-9);
  EXPECT_EQ(with(3), 0.0) << "a partner itself";
  EXPECT_LT(with(1), 0.999);
}

}  // namespace
}  // namespace corvath::training
