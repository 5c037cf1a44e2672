#include "training/subspace_filters.h"

#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "support/points.h"
#include "support/testing.h"
#include "training/forward_selection.h"
#include "training/regression_screening.h"

namespace corvath::training {
namespace {

using math::metamodel::BitVector, math::metamodel::LinearRegression,
    math::metamodel::LinearRegressionSettings;

/// n designs of m inputs with y = 3 x0 + x1 + 0.1 noise.
ResponseData LinearData(Eigen::Index n, Eigen::Index m) {
  const Eigen::MatrixXd points = support::UniformPoints(n, m, 1);
  const Eigen::VectorXd values =
      3.0 * points.col(0) + points.col(1) + 0.1 * support::UniformVector(n, 2);
  return MakeResponseData(points, values, 10, 1);
}

/// The explained share by a regression of the library's own.
double CoDOf(const ResponseData& data, const LinearRegressionSettings& settings) {
  LinearRegression model(data.points, data.values, settings);
  model.Build();
  return Determination(data.values, model.ApproximateSupportPoints());
}

TEST(RegressionScreening, LossesAreThoseOfRegressionsWithoutTheInput) {
  // 15 terms for 4 inputs of 40 designs: order 2 with interactions.
  const ResponseData data = LinearData(40, 4);
  RegressionScreening screening(data, /*adjusted=*/false);
  LinearRegressionSettings settings(4);
  settings.SetOrder(2);
  for (int round = 0; round < 2; ++round) {
    EXPECT_NEAR(screening.GetDetermination(), CoDOf(data, settings), 1e-6);  // of the small ridge
    const Eigen::VectorXd losses = screening.GetLosses();
    const BitVector inputs = screening.GetInputs();
    for (std::size_t j = 0; j < 4; ++j) {
      if (!inputs[j]) {
        EXPECT_EQ(losses(static_cast<Eigen::Index>(j)), 0.0);
        continue;
      }
      LinearRegressionSettings without = settings;
      BitVector others = inputs;
      others[j] = false;
      without.SetVariableSelection(others);
      EXPECT_NEAR(losses(static_cast<Eigen::Index>(j)),
                  CoDOf(data, settings) - CoDOf(data, without), 1e-6);
    }
    screening.Remove(2);
    settings.SetVariableSelection({true, true, false, true});
  }
}

TEST(RegressionScreening, TakesNoMoreInputsThanTheDesignsSufficeForTwice) {
  const auto num_inputs = [](Eigen::Index n, Eigen::Index m) {
    return math::metamodel::CountBits(RegressionScreening(LinearData(n, m), true).GetInputs());
  };
  EXPECT_EQ(num_inputs(14, 6), 6u) << "a plane: 7 coefficients";
  EXPECT_EQ(num_inputs(8, 6), 3u) << "a plane of the most correlated inputs";
  EXPECT_TRUE(RegressionScreening(LinearData(8, 6), true).GetInputs()[0]);
}

TEST(SubspaceFilters, ProposeAllInputsFirstAndThoseThatMatter) {
  const ResponseData data = LinearData(60, 8);
  const auto subspaces = ProposeSubspaces(data, InputFilters());
  ASSERT_FALSE(subspaces.empty());
  EXPECT_EQ(subspaces[0], BitVector(8, true));
  BitVector true_ones(8, false);
  true_ones[0] = true_ones[1] = true;
  EXPECT_NE(std::find(subspaces.begin(), subspaces.end(), true_ones), subspaces.end());
  for (const BitVector& subspace : subspaces) {
    EXPECT_EQ(std::count(subspaces.begin(), subspaces.end(), subspace), 1);
    EXPECT_TRUE(subspace[0]) << "explains nine tenths";
  }
}

TEST(SubspaceFilters, EachFilterCanBeSwitchedOffAndImportantInputsStay) {
  const ResponseData data = LinearData(60, 8);
  InputFilters none;
  none.by_significance = none.by_importance = none.by_quality = false;
  none.by_correlation = false;
  EXPECT_EQ(ProposeSubspaces(data, none).size(), 1u);
  for (bool InputFilters::*filter : {&InputFilters::by_significance, &InputFilters::by_importance,
                                     &InputFilters::by_quality, &InputFilters::by_correlation}) {
    InputFilters one = none;
    one.*filter = true;
    EXPECT_GT(ProposeSubspaces(data, one).size(), 1u);
    one.always = {6};
    for (const BitVector& subspace : ProposeSubspaces(data, one)) EXPECT_TRUE(subspace[6]);
  }
}

TEST(SubspaceFilters, RanksSeeAMonotoneDependenceThatIsNotLinear) {
  // x^15 correlates little with x, its ranks fully: at a level of 0.999 999 only ranks keep it.
  const Eigen::Index n = 15;
  Eigen::MatrixXd points = support::UniformPoints(n, 2, 3);
  const Eigen::VectorXd values = points.col(0).array().pow(40.0);
  const ResponseData data = MakeResponseData(points, values, 5, 1);
  InputFilters settings;
  settings.by_importance = settings.by_quality = settings.by_correlation = false;
  settings.min_significance = 0.999999;
  EXPECT_EQ(ProposeSubspaces(data, settings).size(), 1u);
  settings.rank_correlation = true;
  const auto subspaces = ProposeSubspaces(data, settings);
  ASSERT_EQ(subspaces.size(), 2u);
  EXPECT_EQ(subspaces[1], (BitVector{true, false}));
}

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
