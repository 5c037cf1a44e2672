#include "metamodel/moving_least_squares/moving_least_squares.h"

#include "metamodel/families.h"

#include <Eigen/QR>

namespace corvath::math::metamodel {
namespace {

using support::Deviation;
using transform::TransformType;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Eigen::VectorXd Response(const Eigen::MatrixXd& points) {
  const Eigen::ArrayXd x = points.col(0).array();
  const Eigen::ArrayXd y = points.col(points.cols() - 1).array();
  return 4.0 + (3.0 * x).sin() + x * y + (2.0 * y).exp();
}

MovingLeastSquaresSettings Settings(Eigen::Index m, std::uint64_t order, KernelType type,
                                    const Eigen::VectorXd& parameter) {
  MovingLeastSquaresSettings settings(static_cast<std::uint64_t>(m));
  settings.SetCoordTransform(TransformType::kNone);
  settings.SetOrder(order);
  settings.SetKernelType(type);
  settings.SetKernelParameter(parameter);
  return settings;
}

Eigen::VectorXd Radius(double radius) {
  return Eigen::VectorXd::Constant(1, radius);
}

MovingLeastSquares Isotropic(const Eigen::MatrixXd& points, std::uint64_t order, double radius) {
  MovingLeastSquares model(
      points, Response(points),
      Settings(points.cols(), order, KernelType::kConstInflIsoExp, Radius(radius)));
  EXPECT_TRUE(model.Build());
  return model;
}

/// Weight of a support point at displacement `d`; `all` are the displacements of all of them.
using Weight = std::function<double(const Eigen::RowVectorXd& d, const Eigen::MatrixXd& all)>;

double Thousandth(double ratio) {
  return std::pow(0.001, ratio);
}

/// 1, x_j, x_j^2 up to `order`.
Eigen::RowVectorXd Basis(const Eigen::RowVectorXd& x, std::uint64_t order) {
  Eigen::RowVectorXd basis(1 + x.size() * static_cast<Eigen::Index>(order));
  basis(0) = 1.0;
  if (order >= 1) basis.segment(1, x.size()) = x;
  if (order >= 2) basis.tail(x.size()) = x.array().square();
  return basis;
}

/// The second route: a dense weighted solve by QR for the one point x.
double ByQR(const Eigen::MatrixXd& points, const Eigen::VectorXd& values, std::uint64_t order,
            const Weight& weight, const Eigen::RowVectorXd& x) {
  const Eigen::MatrixXd displacements = points.rowwise() - x;
  Eigen::MatrixXd design(points.rows(), Basis(x, order).size());
  Eigen::VectorXd root(points.rows());
  for (Eigen::Index i = 0; i < points.rows(); ++i) {
    root(i) = std::sqrt(weight(displacements.row(i), displacements));
    design.row(i) = Basis(points.row(i), order);
  }
  const Eigen::VectorXd coefficients =
      (root.asDiagonal() * design).colPivHouseholderQr().solve(root.cwiseProduct(values));
  return Basis(x, order).dot(coefficients);
}

TEST(MovingLeastSquares, PredictsAsADenseWeightedSolveByQR) {
  // More queries than one block holds, and a rest.
  const Eigen::MatrixXd points = support::UniformPoints(300, 2, 1);
  const Eigen::VectorXd values = Response(points);
  const Eigen::MatrixXd x = support::UniformPoints(250, 2, 2);
  const std::tuple<KernelType, Eigen::VectorXd, Weight> cases[] = {
      {KernelType::kConstInflIsoExp, Radius(0.5),
       [](const auto& d, const auto&) { return Thousandth(d.squaredNorm() / 0.25); }},
      {KernelType::kConstInflExp, Eigen::Vector2d(0.5, 0.8),
       [](const auto& d, const auto&) {
         return Thousandth(d(0) * d(0) / 0.25 + d(1) * d(1) / 0.64);
       }},
      {KernelType::kConstInflIsoReg, Radius(0.6),
       [](const auto& d, const auto&) {
         return std::max(0.0, std::pow(d.squaredNorm() / 0.36 + 1e-5, -2) - std::pow(1.00001, -2));
       }},
      {KernelType::kNodalInflExp, Radius(40.0), [](const auto& d, const auto& all) {
         Eigen::VectorXd squared = all.rowwise().squaredNorm();
         std::sort(squared.begin(), squared.end());
         return Thousandth(d.squaredNorm() / squared(39));
       }}};
  for (const auto& [type, parameter, weight] : cases) {
    for (const std::uint64_t order : {0u, 1u, 2u}) {
      MovingLeastSquares model(points, values, Settings(2, order, type, parameter));
      EXPECT_TRUE(model.IsSolvable());
      ASSERT_TRUE(model.Build());
      const Eigen::VectorXd predicted = model.Approximate(x);
      // The normal equations square the condition of the local fits, up to 1e4 near the corners.
      for (Eigen::Index i = 0; i < x.rows(); ++i)
        ASSERT_NEAR(predicted(i), ByQR(points, values, order, weight, x.row(i)), 1e-7)
            << static_cast<int>(type) << ", order " << order;
      EXPECT_LT(Deviation(model.ApproximateSupportPoints(), model.Approximate(points)), 1e-10);
    }
  }
}

TEST(MovingLeastSquares, ManyCoefficientsGiveTheSame) {
  // 81 coefficients: no table of the products of basis functions.
  const Eigen::MatrixXd points = support::UniformPoints(700, 40, 1);
  const MovingLeastSquares model = Isotropic(points, 2, 20.0);
  const Weight weight = [](const auto& d, const auto&) {
    return Thousandth(d.squaredNorm() / 400.0);
  };
  const Eigen::MatrixXd x = support::UniformPoints(5, 40, 2);
  const Eigen::VectorXd predicted = model.Approximate(x);
  for (Eigen::Index i = 0; i < x.rows(); ++i)
    EXPECT_NEAR(predicted(i), ByQR(points, model.GetValues(), 2, weight, x.row(i)), 1e-8);
}

TEST(MovingLeastSquares, HasNoPredictionOutOfReach) {
  const Eigen::MatrixXd points = support::UniformPoints(30, 2, 1);
  Eigen::MatrixXd x = support::UniformPoints(4, 2, 2);
  x.row(1).setConstant(1e3);
  x(2, 0) = kNaN;
  x(3, 1) = HUGE_VAL;
  for (const KernelType type : {KernelType::kConstInflIsoReg, KernelType::kConstInflIsoExp}) {
    for (const std::uint64_t order : {0u, 1u, 2u}) {
      MovingLeastSquares model(points, Response(points), Settings(2, order, type, Radius(1.0)));
      ASSERT_TRUE(model.Build());
      const Eigen::VectorXd predicted = model.Approximate(x);
      EXPECT_TRUE(std::isfinite(predicted(0))) << order;
      EXPECT_TRUE(predicted.tail(3).array().isNaN().all()) << order;
      // Other rows do not matter, but for the order of summation.
      EXPECT_NEAR(model.Approximate(x.topRows(1))(0), predicted(0), 1e-11);
    }
  }
  // A weight of 1e-5 and less does not count: at a distance of sqrt(5 / 3) radii.
  const Eigen::VectorXd line{{0.0, 1.0, 2.0, 3.0}};
  const auto at = [&](double radius) {
    MovingLeastSquares model(line, line,
                             Settings(1, 1, KernelType::kConstInflIsoExp, Radius(radius)));
    model.Build();
    return model.Approximate(Radius(-1.0))(0);
  };
  EXPECT_TRUE(std::isnan(at(2.0 / std::sqrt(5.0 / 3.0) * (1.0 - 1e-9))));
  EXPECT_NEAR(at(2.0 / std::sqrt(5.0 / 3.0) * (1.0 + 1e-9)), -1.0, 1e-8);
}

TEST(RadiusFit, ChoosesTheBestRadiusOfTheScan) {
  constexpr Eigen::Index n = 60;
  const Eigen::MatrixXd points = support::UniformPoints(n, 2, 1);
  const Eigen::VectorXd values = Response(points);
  IndexVector groups(n);
  for (Eigen::Index i = 0; i < n; ++i) groups(i) = static_cast<std::uint64_t>(i % 10);
  // The range of the scan from its definition.
  double largest = 0.0;
  double smallest = HUGE_VAL;
  for (Eigen::Index i = 0; i < n; ++i)
    for (Eigen::Index j = 0; j < i; ++j) {
      const double distance = (points.row(i) - points.row(j)).norm();
      largest = std::max(largest, distance);
      smallest = std::min(smallest, distance);
    }
  double largest_gap = 0.0;
  for (Eigen::Index k = 0; k < 2; ++k) {
    Eigen::VectorXd column = points.col(k);
    std::sort(column.begin(), column.end());
    const Eigen::VectorXd gaps = column.tail(n - 1) - column.head(n - 1);
    largest_gap = std::max(largest_gap, gaps.maxCoeff());
    smallest = std::max(smallest, gaps.minCoeff());
  }
  double lowest = std::max(0.001 * largest, smallest);
  if (largest_gap > 2.0 * lowest) lowest = 0.5 * largest_gap;

  for (const std::uint64_t order : {0u, 1u, 2u}) {
    for (const bool grouped : {false, true}) {
      const IndexVector subsets = grouped ? groups : IndexVector();
      MovingLeastSquares model(points, values,
                               Settings(2, order, KernelType::kConstInflIsoExp, {}));
      int interruptions = 0;
      model.SetInterruptionPoint([&] { ++interruptions; });
      ASSERT_TRUE(model.BuildOptimal(subsets));
      EXPECT_GE(interruptions, 22);
      double best_measure = HUGE_VAL;
      double best_radius = 0.0;
      for (int step = 0; step <= 20; ++step) {
        const double radius = 2.0 * lowest * std::pow(5.0 * largest / (2.0 * lowest), step / 20.0);
        const MovingLeastSquares candidate = Isotropic(points, order, radius);
        const double fit = (values - candidate.ApproximateSupportPoints()).squaredNorm();
        const double validation =
            (values - candidate.ApproximateCrossValidation(subsets)).squaredNorm();
        if (!(2.0 * validation - fit < best_measure)) continue;
        best_measure = 2.0 * validation - fit;
        best_radius = radius;
      }
      const MovingLeastSquaresSettings& chosen = model.GetSettingsBase();
      ASSERT_EQ(chosen.GetKernelParameter().size(), 1);
      EXPECT_NEAR(chosen.GetKernelParameter()(0), best_radius, 1e-12 * best_radius);
      EXPECT_LT(best_radius, 4.0 * largest);  // within the scan: the choice means something
      EXPECT_EQ(chosen.GetState(), SettingsState::kOptimized);
      EXPECT_TRUE(std::isfinite(model.Approximate(points.topRows(1))(0)));
    }
  }
}

TEST(RadiusFit, TellsWhereThereIsNothingToChoose) {
  const Eigen::MatrixXd points = support::UniformPoints(20, 2, 1);
  const Eigen::VectorXd values = Response(points);
  const auto with = [&](KernelType type, const Eigen::MatrixXd& at, const Eigen::VectorXd& y) {
    return MovingLeastSquares(at, y, Settings(2, 1, type, {}));
  };
  EXPECT_FALSE(with(KernelType::kConstInflExp, points, values).BuildOptimal());
  EXPECT_FALSE(with(KernelType::kNodalInflExp, points, values).BuildOptimal());
  const Eigen::MatrixXd same = Eigen::MatrixXd::Ones(20, 2);
  EXPECT_FALSE(with(KernelType::kConstInflIsoExp, same, values).BuildOptimal());
  EXPECT_FALSE(
      with(KernelType::kConstInflIsoExp, points.topRows(2), values.head(2)).BuildOptimal());
  auto model = with(KernelType::kConstInflIsoExp, points, values);
  const Eigen::MatrixXd corners{{0.0, 0.0}, {3.0, 4.0}, {1.0, 1.0}, {2.0, 0.0}};
  auto constant = with(KernelType::kConstInflIsoReg, corners, Eigen::VectorXd::Ones(4));
  ASSERT_TRUE(constant.BuildOptimal());
  EXPECT_DOUBLE_EQ(constant.GetSettingsBase().GetKernelParameter()(0), 25.0);
  EXPECT_DOUBLE_EQ(constant.Approximate(corners.topRows(1))(0), 1.0);
  // An interruption ends the fit.
  model.SetInterruptionPoint([] { throw std::runtime_error("interrupted"); });
  EXPECT_ERROR(std::runtime_error, "interrupted", model.BuildOptimal());
}

TEST(MovingLeastSquares, TakesTheBoxCoxTransformOfAQuadraticRegression) {
  const Eigen::MatrixXd points = support::UniformPoints(60, 3, 1);
  const Eigen::VectorXd values = (3.0 * points.rowwise().sum()).array().exp();
  MovingLeastSquaresSettings settings = Settings(3, 1, KernelType::kConstInflIsoExp, Radius(1.0));
  settings.SetVariableSelection({true, true, false});
  settings.SetValueTransform(TransformType::kBoxCox);
  OrdinaryKrigingSettings kriging(3);
  kriging.SetCoordTransform(TransformType::kNone);
  kriging.SetVariableSelection({true, true, false});
  kriging.SetKernelParameter(Radius(1.0));
  kriging.SetValueTransform(TransformType::kBoxCox);
  const auto transform_of = [&](Eigen::Index n, std::uint64_t order, bool interactions) {
    LinearRegressionSettings quadratic(3);
    quadratic.SetCoordTransform(TransformType::kNone);
    quadratic.SetOrder(order);
    if (!interactions) quadratic.SetInteractionSelection({});
    quadratic.SetVariableSelection({true, true, false});
    LinearRegression regression(points.topRows(n), values.head(n), quadratic);
    EXPECT_TRUE(regression.IsSolvable());
    EXPECT_TRUE(regression.BuildBoxCox());
    return regression.GetTransValue()->GetParameters();
  };
  // 6, 5 and 3 coefficients fit into 60, 5 and 4 points.
  const std::tuple<Eigen::Index, std::uint64_t, bool> cases[] = {
      {60, 2, true}, {5, 2, false}, {4, 1, false}};
  for (const auto& [n, order, interactions] : cases) {
    const auto expected = transform_of(n, order, interactions);
    const auto check = [&](auto&& model) {
      ASSERT_TRUE(model.BuildBoxCox());
      EXPECT_TRUE(model.IsBuilt());
      EXPECT_EQ(model.GetTransValue()->GetParameters(), expected);
      EXPECT_EQ(model.GetSettingsBase().GetValueTransformParameter(), expected);
      EXPECT_EQ(model.GetSettingsBase().GetState(), SettingsState::kOptimized);
    };
    check(MovingLeastSquares(points.topRows(n), values.head(n), settings));
    check(OrdinaryKriging(points.topRows(n), values.head(n), kriging));
  }
  EXPECT_NE(transform_of(60, 2, true)[0], 1.0);
}

/// How much is lost without each input of three, by models on data without the column. The second
/// input does nothing; the model has a radius for each.
template <class Model, class Settings>
void ExpectSingleCoPs(KernelType type) {
  const Eigen::MatrixXd points = support::UniformPoints(50, 3, 1);
  const Eigen::VectorXd values = Response(points);
  const double total = (values.array() - values.mean()).square().sum();
  const IndexVector groups = IndexVector::LinSpaced(50, 0, 4);
  const auto fit = [&](const std::vector<Eigen::Index>& columns) {
    const Eigen::Vector3d radii(1.0, 1.5, 2.0);
    Settings settings(columns.size());
    settings.SetCoordTransform(TransformType::kNone);
    settings.SetKernelType(type);
    settings.SetKernelParameter(type == KernelType::kConstInflExp ? Eigen::VectorXd(radii(columns))
                                                                  : Radius(1.0));
    Model model(points(Eigen::all, columns), values, settings);
    EXPECT_TRUE(model.Build());
    return model;
  };
  const auto loss = [&](const Model& model) {
    return (values - model.ApproximateCrossValidation(groups)).squaredNorm() / total;
  };
  const Model model = fit({0, 1, 2});
  const Eigen::Vector3d expected(loss(fit({1, 2})), loss(fit({0, 2})), loss(fit({0, 1})));
  EXPECT_LT(Deviation(model.ComputeSingleCoPs(groups), expected.array() - loss(model)), 1e-8);
  EXPECT_GT(model.ComputeSingleCoPs()(0), 0.01);  // matters
  Settings settings = model.GetSettingsBase();
  settings.SetVariableSelection({false, true, false});
  settings.SetKernelParameter(Radius(1.5));
  Model one(points, values, settings);
  ASSERT_TRUE(one.Build());
  // Without any input each point has the mean of the other groups, or all is lost.
  double unexplained = 0.0;
  for (Eigen::Index i = 0; i < 50; ++i) {
    const auto others = groups.array() != groups(i);
    const double mean = others.select(values.array(), 0.0).sum() / double(others.count());
    unexplained += std::pow(values(i) - mean, 2) / total;
  }
  if (std::is_same_v<Model, OrdinaryKriging>) unexplained = 1.0;
  EXPECT_LT(
      Deviation(one.ComputeSingleCoPs(groups), Eigen::Vector3d(0.0, unexplained - loss(one), 0.0)),
      1e-8);
}

TEST(SingleCoPs, AreTheLossWithoutTheInput) {
  for (const KernelType type : {KernelType::kConstInflExp, KernelType::kConstInflIsoExp}) {
    ExpectSingleCoPs<MovingLeastSquares, MovingLeastSquaresSettings>(type);
    ExpectSingleCoPs<OrdinaryKriging, OrdinaryKrigingSettings>(type);
  }
}

TEST(MovingLeastSquares, DescribesItselfAndKnowsItsLimitsOfData) {
  Eigen::MatrixXd points = support::UniformPoints(10, 3, 1);
  EXPECT_EQ(MovingLeastSquares(points, Response(points)).GetDescription(),
            L"Moving Least Squares | 1| Constant influence, isotropic, exponential coordinate "
            L"transformation : MinMax ( 0, 1 ) | value transformation : nonenone");
  points.col(2) = points.col(0) + points.col(1);
  EXPECT_FALSE(MovingLeastSquares(points, Response(points)).IsSolvable());
  EXPECT_TRUE(MovingLeastSquares(points, Response(points), Settings(3, 0, KernelType(101), {}))
                  .IsSolvable());
  MovingLeastSquares few(points.topRows(3), Response(points.topRows(3)));
  EXPECT_FALSE(few.IsSolvable());
  EXPECT_FALSE(few.Build());
  EXPECT_FALSE(few.IsBuilt());
}

}  // namespace
}  // namespace corvath::math::metamodel
