#include "training/subspace_filters.h"

#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "support/points.h"
#include "training/regression_screening.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace corvath::training {
namespace {

using math::metamodel::BitVector;
using math::metamodel::LinearRegression;
using math::metamodel::LinearRegressionSettings;

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

}  // namespace
}  // namespace corvath::training
