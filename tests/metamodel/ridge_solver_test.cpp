#include "metamodel/regression/ridge_solver.h"

#include "metamodel/regression/linear_regression.h"
#include "support/points.h"

#include <Eigen/QR>
#include <gtest/gtest.h>

#include <cmath>

namespace corvath::math::metamodel {
namespace {

/// The same penalised fit by least squares with a row more for each coefficient: QR, not the
/// decomposition of RidgeSolver. The constant stands first.
Eigen::VectorXd FitByAugmentedRows(const Eigen::MatrixXd& design, const Eigen::VectorXd& values,
                                   double weight) {
  const Eigen::Index k = design.cols();
  Eigen::MatrixXd rows = Eigen::MatrixXd::Zero(design.rows() + k, 1 + k);
  rows.topRows(design.rows()) << Eigen::VectorXd::Ones(design.rows()), design;
  rows.bottomRightCorner(k, k).diagonal().setConstant(std::sqrt(weight));
  Eigen::VectorXd right = Eigen::VectorXd::Zero(rows.rows());
  right.head(values.size()) = values;
  return rows.colPivHouseholderQr().solve(right);
}

LinearRegressionSettings QuadraticSettings(std::size_t m) {
  LinearRegressionSettings settings(m);
  settings.SetOrder(2);
  return settings;
}

TEST(RidgeSolver, MatchesLeastSquaresWithAugmentedRowsAndRefitsWithoutEachGroup) {
  for (const auto& [n, m] :
       {std::pair{40, 3}, std::pair{12, 5}}) {  // fewer and more terms than rows
    const Eigen::MatrixXd points = support::UniformPoints(n, m, 3);
    const Eigen::VectorXd values =
        points.rowwise().sum().array().sin() + support::UniformVector(n, 4).array();
    const LinearRegressionSettings settings = QuadraticSettings(static_cast<std::size_t>(m));
    const StandardTerms terms(points, settings.GetMainTermSelection(),
                              settings.GetInteractionSelection(), 0.5);
    const Eigen::MatrixXd& design = terms.GetDesign();
    EXPECT_EQ(design.cols(), 2 * m + m * (m - 1) / 2);
    const RidgeSolver solver(design, values);
    IndexVector groups(n);
    for (Eigen::Index i = 0; i < n; ++i) groups(i) = static_cast<std::uint64_t>(i) % 4;
    for (const double penalty : {1e-4, 0.1, 10.0}) {
      const double weight = penalty * n;
      const Eigen::VectorXd expected = FitByAugmentedRows(design, values, weight);
      EXPECT_LT(support::Deviation(solver.GetCoefficients(penalty), expected.tail(design.cols())),
                1e-8);
      EXPECT_NEAR(solver.GetConstant(), expected(0), 1e-9);
      const Eigen::VectorXd predicted = solver.CrossValidate(penalty, groups);
      for (std::uint64_t group = 0; group < 4; ++group) {
        std::vector<Eigen::Index> own, others;
        for (Eigen::Index i = 0; i < n; ++i) (groups(i) == group ? own : others).push_back(i);
        const Eigen::VectorXd refit =
            FitByAugmentedRows(design(others, Eigen::all), values(others), weight);
        for (const Eigen::Index i : own)
          EXPECT_NEAR(predicted(i), refit(0) + design.row(i).dot(refit.tail(design.cols())), 1e-7);
      }
    }
  }
}

TEST(RidgeSolver, PlainCoefficientsAreTheSamePolynomial) {
  const Eigen::MatrixXd points = 3.0 + 2.0 * support::UniformPoints(30, 3, 5).array();
  const Eigen::VectorXd values = points.rowwise().prod();
  LinearRegression model(points, values, QuadraticSettings(3));
  const RidgePenalty penalty{0.01, 0.3};
  ASSERT_TRUE(model.BuildRidge(penalty));
  // By the standard terms of the scaled points, not through the plain coefficients.
  Eigen::MatrixXd scaled = points;
  for (auto column : scaled.colwise()) {
    const double lower = column.minCoeff();
    column = ((column.array() - lower) / (column.maxCoeff() - lower)).matrix();
  }
  const LinearRegressionSettings& settings = model.GetSettingsBase();
  const StandardTerms terms(scaled, settings.GetMainTermSelection(),
                            settings.GetInteractionSelection(), penalty.curvature);
  const RidgeSolver solver(terms.GetDesign(), values);
  const Eigen::VectorXd expected =
      (terms.GetDesign() * solver.GetCoefficients(penalty.penalty)).array() + solver.GetConstant();
  EXPECT_LT(support::Deviation(model.Approximate(points), expected), 1e-10);
}

TEST(RidgeSolver, WithoutTermsItIsTheMeanOfTheOthers) {
  const Eigen::Vector4d values(1.0, 2.0, 3.0, 6.0);
  const RidgeSolver solver(Eigen::MatrixXd(4, 0), values);
  EXPECT_EQ(solver.GetConstant(), 3.0);
  IndexVector groups(4);
  groups << 0, 1, 2, 3;
  const Eigen::Vector4d means(11.0 / 3.0, 10.0 / 3.0, 3.0, 2.0);
  EXPECT_LT(support::Deviation(solver.CrossValidate(1.0, groups), means), 1e-12);
}

}  // namespace
}  // namespace corvath::math::metamodel
