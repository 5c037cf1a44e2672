#include "metamodel/regression/linear_regression.h"

#include "metamodel/families.h"
#include "metamodel/regression/ridge_solver.h"

#include <Eigen/QR>

namespace corvath::math::metamodel {
namespace {

using support::Deviation;
using transform::TransBoxCox, transform::TransformType;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Points away from the unit cube, so that the coordinate transform matters.
Eigen::MatrixXd Points(Eigen::Index n, Eigen::Index m, std::uint64_t seed) {
  return 4.0 * support::UniformPoints(n, m, seed).array() - 7.0;
}

/// A smooth response that no quadratic reaches, positive.
Eigen::VectorXd Response(const Eigen::MatrixXd& points) {
  const Eigen::ArrayXd x = points.col(0).array();
  const Eigen::ArrayXd y = points.col(points.cols() - 1).array();
  return (0.3 * x).exp() + (x * y).sin() + 4.0 + 0.1 * points.rowwise().sum().array().square();
}

LinearRegressionSettings Quadratic(std::uint64_t m) {
  LinearRegressionSettings settings(m);
  settings.SetOrder(2);
  return settings;
}

/// 1, x_j, x_j^2, x_i x_j written out term by term.
Eigen::MatrixXd FullQuadratic(const Eigen::MatrixXd& x) {
  const Eigen::Index m = x.cols();
  Eigen::MatrixXd design(x.rows(), 1 + 2 * m + m * (m - 1) / 2);
  for (Eigen::Index row = 0; row < x.rows(); ++row) {
    Eigen::Index c = 0;
    design(row, c++) = 1.0;
    for (Eigen::Index j = 0; j < m; ++j) design(row, c++) = x(row, j);
    for (Eigen::Index j = 0; j < m; ++j) design(row, c++) = x(row, j) * x(row, j);
    for (Eigen::Index i = 0; i < m; ++i)
      for (Eigen::Index j = i + 1; j < m; ++j) design(row, c++) = x(row, i) * x(row, j);
  }
  return design;
}

/// Weighted least squares by QR of diag(sqrt(w)) X: the second route to the coefficients.
Eigen::VectorXd SolveByQR(const Eigen::MatrixXd& X, const Eigen::VectorXd& y,
                          const Eigen::VectorXd& w) {
  const Eigen::VectorXd root = w.cwiseSqrt();
  return (root.asDiagonal() * X).colPivHouseholderQr().solve(root.cwiseProduct(y));
}

TEST(LinearRegression, CoefficientsAndPredictionsAreThoseOfQR) {
  const Eigen::MatrixXd points = Points(60, 4, 1);
  const Eigen::VectorXd values = Response(points);
  const Eigen::MatrixXd design = FullQuadratic(Scaled(points, points));
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(60);
  const Eigen::VectorXd weights = 0.1 + support::UniformVector(60, 2).array();
  for (const bool weighted : {false, true}) {
    LinearRegression model(points, values, Quadratic(4), weighted ? weights : Eigen::VectorXd());
    EXPECT_TRUE(model.IsSolvable());
    ASSERT_TRUE(model.Build());
    const Eigen::VectorXd expected = SolveByQR(design, values, weighted ? weights : ones);
    // The normal equations square a condition number of about 1e2.
    EXPECT_LT(Deviation(model.GetCoefficients(), expected), 1e-11);
    // More rows than one block, and a rest that fills no tile.
    const Eigen::MatrixXd x = Points(525, 4, 3);
    const Eigen::VectorXd at_x = FullQuadratic(Scaled(x, points)) * expected;
    EXPECT_LT(Deviation(model.Approximate(x), at_x), 1e-11);
    EXPECT_LT(Deviation(model.ApproximateSupportPoints(), design * expected), 1e-11);
  }
}

TEST(LinearRegression, UsesExactlyTheSelectedTerms) {
  const Eigen::MatrixXd points = Points(40, 4, 1);
  const Eigen::MatrixXd x = Scaled(points, points);
  LinearRegressionSettings settings(4);
  settings.SetOrder(3);
  BitVector main(12, false);
  main[1] = main[1 * 4 + 2] = main[2 * 4 + 2] = true;  // x1, x2^2, x2^3
  BitVector interactions(6, false);
  interactions[4] = true;  // pairs 01 02 03 12 13 23: x1 x3
  settings.SetMainTermSelection(main);
  settings.SetInteractionSelection(interactions);
  const Eigen::VectorXd values = 2.0 - 3.0 * x.col(1).array() + x.col(2).array().square() +
                                 5.0 * x.col(2).array().cube() +
                                 7.0 * x.col(1).array() * x.col(3).array();
  LinearRegression model(points, values, settings);
  ASSERT_TRUE(model.Build());
  const Eigen::VectorXd expected{{2.0, -3.0, 1.0, 5.0, 7.0}};
  EXPECT_LT(Deviation(model.GetCoefficients(), expected), 1e-10);
  EXPECT_LT(Deviation(model.Approximate(points), values), 1e-12);
  EXPECT_EQ(model.GetVariableSelection(), (BitVector{false, true, true, true}));
  EXPECT_EQ(model.GetNumberCoefficients(), 5u);
}

TEST(LinearRegression, PassesNaNAndInfinityAsTheSumOfItsTerms) {
  LinearRegression model(Points(60, 3, 1), Response(Points(60, 3, 1)), Quadratic(3));
  ASSERT_TRUE(model.Build());
  Eigen::MatrixXd x = Points(20, 3, 2);
  Eigen::VectorXd clean = model.Approximate(x);
  x(4, 1) = kNaN;
  x(11, 0) = HUGE_VAL;
  x(18, 2) = -HUGE_VAL;
  const Eigen::VectorXd dirty = model.Approximate(x);
  const Eigen::VectorXd by_terms =
      FullQuadratic(Scaled(x, Points(60, 3, 1))) * model.GetCoefficients();
  for (const Eigen::Index i : {4, 11, 18}) {
    EXPECT_EQ(Deviation(dirty.row(i), by_terms.row(i)), 0.0) << i;
    clean(i) = dirty(i);
  }
  EXPECT_EQ(Deviation(dirty, clean), 0.0);
  EXPECT_TRUE(std::isnan(dirty(4)));
  EXPECT_FALSE(std::isfinite(dirty(11)));
}

TEST(LinearRegression, KnowsItsLimitsOfData) {
  const Eigen::MatrixXd points = Points(10, 3, 1);
  const Eigen::VectorXd values = Response(points);
  const Eigen::VectorXi first_nine = Eigen::VectorXi::LinSpaced(9, 0, 8);
  LinearRegression too_few(points(first_nine, Eigen::all), values(first_nine), Quadratic(3));
  EXPECT_FALSE(too_few.IsSolvable());
  EXPECT_FALSE(too_few.Build());
  EXPECT_FALSE(too_few.IsBuilt());

  // As many coefficients as points: the model interpolates, and no point is determined by others.
  LinearRegression full(points, values, Quadratic(3));
  ASSERT_TRUE(full.Build());
  EXPECT_LT(Deviation(full.Approximate(points), values), 1e-8);
  const Eigen::VectorXd others = (values.sum() - values.array()) / 9.0;
  EXPECT_LT(Deviation(full.ApproximateLeaveOneOut(), others), 1e-12);
  // Neither where the normal equations have a condition of 1e13 and the leverages are noise.
  LinearRegressionSettings fifth(8);
  fifth.SetOrder(5);
  const auto num_terms = static_cast<Eigen::Index>(fifth.GetNumberCoefficients());
  const Eigen::MatrixXd many = Points(num_terms, 8, 2);
  LinearRegression noisy(many, Response(many), fifth);
  ASSERT_TRUE(noisy.Build());
  EXPECT_LT(
      Deviation(noisy.ApproximateLeaveOneOut(), (Response(many).sum() - Response(many).array()) /
                                                    static_cast<double>(num_terms - 1)),
      1e-12);

  Eigen::MatrixXd dependent = Points(20, 3, 1);
  dependent.col(2) = dependent.col(0) - 2.0 * dependent.col(1);
  EXPECT_FALSE(LinearRegression(dependent, Response(dependent)).IsSolvable());
}

TEST(LinearRegression, ConstantResponseIsItsMeanEverywhere) {
  const Eigen::MatrixXd points = Points(30, 2, 1);
  const Eigen::VectorXd values = Eigen::VectorXd::Constant(30, 1.0 / 3.0);
  LinearRegression model(points, values, Quadratic(2));
  const IndexVector groups = IndexVector::LinSpaced(30, 0, 2);
  const auto check = [&] {
    EXPECT_EQ(model.GetCoefficients().tail(5), Eigen::VectorXd::Zero(5));
    EXPECT_LT(Deviation(model.Approximate(Points(9, 2, 2)), values.head(9)), 1e-15);
    EXPECT_LT(Deviation(model.ApproximateCrossValidation(groups), values), 1e-15);
  };
  ASSERT_TRUE(model.Build());
  EXPECT_EQ(model.GetCoefficients()(0), 1.0 / 3.0);
  check();
  ASSERT_TRUE(model.BuildBoxCox());
  check();
  EXPECT_EQ(model.GetTransValue()->GetParameters(), (std::vector<double>{1.0, 0.1, 10.1}));
}

TEST(BoxCoxSearch, FindsTheBestOfItsGrid) {
  const Eigen::MatrixXd points = Points(50, 2, 1);
  const Eigen::VectorXd values = (points.col(0).array() + 0.3 * points.col(1).array()).exp();
  const Eigen::VectorXd weights = 0.5 + support::UniformVector(50, 2).array();
  for (const bool weighted : {false, true}) {
    const Eigen::VectorXd w = weighted ? weights : Eigen::VectorXd();
    LinearRegression model(points, values, w);
    ASSERT_TRUE(model.BuildBoxCox());
    // Each of the 42 candidates by a model of its own; its error in the user's units.
    double best_error = HUGE_VAL;
    std::vector<double> best;
    for (const double low : {0.1, 10.1}) {
      for (const int k :
           {-1, -2, -3, -4, -5, -6, -8, -10, -13, -20, 0, 20, 13, 10, 8, 6, 5, 4, 3, 2, 1}) {
        LinearRegressionSettings settings(2);
        settings.SetValueTransform(TransformType::kBoxCox);
        settings.SetValueTransformParameter(TransBoxCox(k, low, 10.2 - low).GetParameters());
        LinearRegression candidate(points, values, settings, w);
        ASSERT_TRUE(candidate.Build());
        const Eigen::ArrayXd e = candidate.ApproximateSupportPoints() - values;
        const Eigen::ArrayXd squares = e.isFinite().select(e.square(), 0.0);
        const double error = squares.sum() / static_cast<double>(e.isFinite().count());
        if (!(error < best_error)) continue;
        best_error = error;
        best = candidate.GetTransValue()->GetParameters();
      }
    }
    EXPECT_EQ(model.GetTransValue()->GetParameters(), best);
    EXPECT_EQ(model.GetSettingsBase().GetValueTransformParameter(), best);
    EXPECT_EQ(model.GetSettingsBase().GetValueTransform(), TransformType::kBoxCox);
    EXPECT_EQ(model.GetSettingsBase().GetState(), SettingsState::kOptimized);
    const Eigen::VectorXd e = model.ApproximateSupportPoints() - values;
    EXPECT_NEAR(e.squaredNorm() / 50.0, best_error, 1e-12 * best_error);
    EXPECT_NE(best[0], 1.0);  // the response asks for a transform
    EXPECT_EQ(model.GetModelFunction({}),
              L"No model function for Box-Cox transformation available");
  }
}

TEST(BoxCoxSearch, IsNeutralWithoutSpareData) {
  const Eigen::MatrixXd points = Points(3, 2, 1);
  LinearRegressionSettings settings(2);
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({0.5, 0.1, 10.1});
  LinearRegression model(points, Response(points), settings);
  ASSERT_TRUE(model.BuildOptimal());
  EXPECT_EQ(model.GetTransValue()->GetParameters(), (std::vector<double>{1.0, 0.1, 10.1}));
  EXPECT_EQ(model.GetSettingsBase().GetNumberParameters(), 3u);
  EXPECT_FALSE(LinearRegression(points.topRows(2), Response(points).head(2)).BuildBoxCox());
}

TEST(LinearRegression, WritesItsPolynomialInTheUsersInputs) {
  const Eigen::MatrixXd points = Points(30, 2, 1);
  const Eigen::ArrayXd a = points.col(0);
  const Eigen::ArrayXd b = points.col(1);
  LinearRegressionSettings settings(2);
  settings.SetOrder(2);
  settings.SetMainTermSelection({true, true, false, true});
  LinearRegression model(points, 1.5 + 2.0 * a - 3.0 * b + 0.25 * b.square() - 250.0 * a * b,
                         settings);
  EXPECT_EQ(model.GetModelFunction({}), L"No valid model available");
  ASSERT_TRUE(model.Build());
  EXPECT_EQ(model.GetModelFunction({L"a", L"b"}), L"1.5 + 2*a -3*b + 0.25*b^2 -250*a*b");
  EXPECT_EQ(model.GetModelFunction({L"too", L"many", L"names"}),
            L"1.5 + 2*X1 -3*X2 + 0.25*X2^2 -250*X1*X2");
  settings.SetInputNames({L"p", L"q"});
  model.Initialize(settings);
  ASSERT_TRUE(model.Build());
  EXPECT_EQ(model.GetModelFunction({}), L"1.5 + 2*p -3*q + 0.25*q^2 -250*p*q");
}

TEST(LinearRegression, DescribesItself) {
  LinearRegressionSettings settings(1);
  settings.SetLimitTransform(TransformType::kLimits);
  settings.SetLimitTransformParameter({0.0, 5.0});
  LinearRegression model(Eigen::Vector3d(0.0, 1.0, 2.0), Eigen::Vector3d(1.0, 1.5, 2.0), settings);
  EXPECT_EQ(model.GetName(true), L"Linear Regression");
  EXPECT_EQ(model.GetName(false), L"Linear Regression | 1");
  const std::wstring transforms =
      L"coordinate transformation : MinMax ( 0, 1 ) | value transformation : noneLimits (0, 5)";
  EXPECT_EQ(model.GetDescription(), L"Linear Regression | 1" + transforms);
  ASSERT_TRUE(model.Build());
  EXPECT_EQ(model.GetDescription(), L"Linear Regression | 1 | ( 1 1 ) | " + transforms);
  // The limits clip predictions.
  EXPECT_EQ(model.Approximate(Eigen::Vector2d(-10.0, 100.0)), Eigen::Vector2d(0.0, 5.0));
}

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

TEST(RidgeSolver, MatchesLeastSquaresWithAugmentedRowsAndRefitsWithoutEachGroup) {
  for (const auto& [n, m] :
       {std::pair{40, 3}, std::pair{12, 5}}) {  // fewer and more terms than rows
    const Eigen::MatrixXd points = support::UniformPoints(n, m, 3);
    const Eigen::VectorXd values =
        points.rowwise().sum().array().sin() + support::UniformVector(n, 4).array();
    const LinearRegressionSettings settings = Quadratic(static_cast<std::size_t>(m));
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
      EXPECT_LT(Deviation(solver.GetCoefficients(penalty), expected.tail(design.cols())), 1e-8);
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
  LinearRegression model(points, values, Quadratic(3));
  const RidgePenalty penalty{0.01, 0.3};
  ASSERT_TRUE(model.BuildRidge(penalty));
  // By the standard terms of the scaled points, not through the plain coefficients.
  const LinearRegressionSettings& settings = model.GetSettingsBase();
  const StandardTerms terms(Scaled(points, points), settings.GetMainTermSelection(),
                            settings.GetInteractionSelection(), penalty.curvature);
  const RidgeSolver solver(terms.GetDesign(), values);
  const Eigen::VectorXd expected =
      (terms.GetDesign() * solver.GetCoefficients(penalty.penalty)).array() + solver.GetConstant();
  EXPECT_LT(Deviation(model.Approximate(points), expected), 1e-10);
}

TEST(RidgeSolver, TheOptimalPenaltyHasTheLeastErrorWithoutEachPoint) {
  const Eigen::MatrixXd points =
      support::UniformPoints(12, 1, 3);  // no products: squares alone bend
  const Eigen::VectorXd values = points.col(0) + 0.5 * support::UniformVector(12, 4);
  LinearRegression model(points, values, Quadratic(1));
  IndexVector singles(12);
  std::iota(singles.begin(), singles.end(), 0);
  Eigen::VectorXd predicted;
  EXPECT_EQ(model.BuildOptimalRidge(singles, singles, predicted).curvature, 0.3);
  const double least = (values - predicted).squaredNorm();
  for (const double curvature : {1.0, 0.3})
    for (double logarithm = -6.0; logarithm < 2.1; logarithm += 0.4) {
      const RidgePenalty other{std::pow(10.0, logarithm), curvature};
      EXPECT_GE((values - model.CrossValidateRidge(other, singles)).squaredNorm(),
                least * (1.0 - 1e-9));
    }
}

TEST(RidgeSolver, WithoutTermsItIsTheMeanOfTheOthers) {
  const Eigen::Vector4d values(1.0, 2.0, 3.0, 6.0);
  const RidgeSolver solver(Eigen::MatrixXd(4, 0), values);
  EXPECT_EQ(solver.GetConstant(), 3.0);
  IndexVector groups(4);
  groups << 0, 1, 2, 3;
  const Eigen::Vector4d means(11.0 / 3.0, 10.0 / 3.0, 3.0, 2.0);
  EXPECT_LT(Deviation(solver.CrossValidate(1.0, groups), means), 1e-12);
}

}  // namespace
}  // namespace corvath::math::metamodel
