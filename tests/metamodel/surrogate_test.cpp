#include "metamodel/surrogate.h"

#include "metamodel/families.h"
#include "metamodel/local_errors.h"
#include "support/stub_surrogate.h"

namespace corvath::math::metamodel {
namespace {

using support::Deviation, support::MessageOfExactly;
using transform::TransformType;

/// A model with given cross-validation residuals and no transforms: shows the base class alone.
class GivenModel : public support::StubSurrogate {
 public:
  GivenModel(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
             const Eigen::VectorXd& residuals)
      : given_(residuals) {
    SetSupportData(points, values);
    SetCoordTransform(TransformType::kNone, {});
  }
  bool Build() override {
    points_trans_reduced_ = TransformedPoints();
    need_build_ = false;
    return true;
  }
  bool IsBuilt() const override { return !need_build_; }
  Eigen::VectorXd Approximate(const ConstPoints& points) const override {
    return points.rowwise().sum();
  }
  Eigen::VectorXd ApproximateCrossValidation(const IndexVector& subsets) const override {
    ++num_validations;
    last_subsets = subsets;
    return values_ - given_;
  }
  BitVector GetVariableSelection() const override {
    return BitVector(static_cast<std::size_t>(points_->cols()), true);
  }
  GivenModel* Clone() const override { return new GivenModel(*this); }
  void SetSettings(const SurrogateSettingsBase&) override { throw std::logic_error("no settings"); }

  mutable int num_validations = 0;
  mutable IndexVector last_subsets;

 private:
  Eigen::VectorXd given_;
};

GivenModel RandomModel(Eigen::Index n, Eigen::Index m) {
  return GivenModel(support::UniformPoints(n, m, 1), support::UniformVector(n, 2),
                    0.2 * support::UniformVector(n, 3).array() - 0.1);
}

/// Mean over all points of the distance to the point at `position` of the sorted distances.
double MeanDistance(const Eigen::MatrixXd& points, std::size_t position) {
  double sum = 0.0;
  for (Eigen::Index i = 0; i < points.rows(); ++i) {
    std::vector<double> distances;
    for (Eigen::Index k = 0; k < points.rows(); ++k)
      distances.push_back((points.row(i) - points.row(k)).norm());
    std::sort(distances.begin(), distances.end());
    sum += distances[std::min(position, distances.size() - 1)];
  }
  return sum / static_cast<double>(points.rows());
}

TEST(SurrogateErrors, RadiiAreMeanDistancesUnlessAGapIsLarger) {
  GivenModel even = RandomModel(80, 2);
  even.Build();
  ASSERT_TRUE(even.BuildErrors());
  // The (2 r + 1)-th and the 50th nearest, the point itself counted as the first.
  EXPECT_NEAR(even.GetPointsRadiiMean(), MeanDistance(even.GetPoints(), 4), 1e-14);
  EXPECT_NEAR(even.GetWeightErrorRadius(), MeanDistance(even.GetPoints(), 49), 1e-14);

  // Two tight clusters, 100 apart in the first input.
  Eigen::MatrixXd points = 1e-3 * support::UniformPoints(120, 2, 1);
  points.col(0).head(60).array() += 100.0;
  const double gap = points.col(0).head(60).minCoeff() - points.col(0).tail(60).maxCoeff();
  GivenModel clusters(points, support::UniformVector(120, 2), support::UniformVector(120, 3));
  clusters.Build();
  ASSERT_TRUE(clusters.BuildErrors());
  EXPECT_DOUBLE_EQ(clusters.GetPointsRadiiMean(), 0.1 * gap);
  EXPECT_DOUBLE_EQ(clusters.GetWeightErrorRadius(), gap);
}

TEST(SurrogateErrors, AveragesResidualsByNearness) {
  GivenModel model = RandomModel(60, 3);
  model.Build();
  ASSERT_TRUE(model.BuildErrors());
  const Eigen::VectorXd& e = model.GetResiduals();
  EXPECT_LT(Deviation(model.GetValues() - model.ApproximatePrognosis(), e), 1e-15);
  const double sst = (model.GetValues().array() - model.GetValues().mean()).square().sum();
  // More rows than one block; some of them far outside.
  Eigen::MatrixXd x = support::UniformPoints(300, 3, 4);
  x.bottomRows(20).array() += 1.0;
  const Eigen::MatrixXd errors = model.ApproximateErrors(x);
  ASSERT_EQ(errors.cols(), kNumErrorColumns);
  const double h = model.GetPointsRadiiMean();
  const double radius = model.GetWeightErrorRadius();
  for (Eigen::Index row = 0; row < x.rows(); ++row) {
    double weight = 0.0, squares = 0.0, sum = 0.0, magnitudes = 0.0, density = 0.0;
    for (Eigen::Index i = 0; i < e.size(); ++i) {
      const double distance = (x.row(row) - model.GetPoints().row(i)).norm();
      const double w = std::pow(0.001, std::pow(distance / radius, 2));
      density += std::pow(0.01, std::pow(distance / h, 2));
      weight += w;
      squares += w * e(i) * e(i);
      sum += w * e(i);
      magnitudes += w * std::abs(e(i));
    }
    const double mean_square = squares / weight;
    EXPECT_NEAR(errors(row, kLocalCoP), std::max(0.0, 1.0 - mean_square * 60.0 / sst), 1e-12);
    EXPECT_NEAR(errors(row, kRootMeanSquareError), std::sqrt(mean_square), 1e-13);
    EXPECT_NEAR(errors(row, kMeanError), sum / weight, 1e-13);
    EXPECT_NEAR(errors(row, kMeanAbsoluteError), magnitudes / weight, 1e-13);
    EXPECT_NEAR(errors(row, kDensity), density, 1e-12);
  }
}

TEST(SurrogateErrors, ReportsNoNegativeCoP) {
  const Eigen::VectorXd values = 1e-3 * support::UniformVector(30, 2);
  GivenModel model(support::UniformPoints(30, 2, 1), values, Eigen::VectorXd::Ones(30));
  model.Build();
  model.BuildErrors();
  const Eigen::MatrixXd errors = model.ApproximateErrors(support::UniformPoints(5, 2, 3));
  EXPECT_EQ(errors.col(kLocalCoP), Eigen::VectorXd::Zero(5));
  EXPECT_LT(Deviation(errors.middleCols(1, 3), Eigen::MatrixXd::Ones(5, 3)), 1e-14);
}

TEST(SurrogateErrors, ConstantResponseOrPerfectFitHasNone) {
  const Eigen::MatrixXd points = support::UniformPoints(30, 2, 1);
  GivenModel constant(points, Eigen::VectorXd::Ones(30), support::UniformVector(30, 2));
  GivenModel perfect(points, support::UniformVector(30, 2), Eigen::VectorXd::Zero(30));
  for (GivenModel* model : {&constant, &perfect}) {
    model->Build();
    model->BuildErrors();
    const Eigen::MatrixXd errors = model->ApproximateErrors(points);
    EXPECT_EQ(errors.leftCols(4), Eigen::RowVector4d(1, 0, 0, 0).replicate(30, 1));
    EXPECT_GE(errors.col(kDensity).minCoeff(), 1.0);  // each point counts itself
  }
}

TEST(SurrogateErrors, AreGlobalForAModelWithoutInputs) {
  const Eigen::VectorXd values = support::UniformVector(20, 2);
  LinearRegressionSettings settings(2);
  settings.SetOrder(0);
  LinearRegression mean(support::UniformPoints(20, 2, 1), values, settings);
  ASSERT_TRUE(mean.Build());
  ASSERT_TRUE(mean.BuildErrors());
  EXPECT_EQ(mean.GetWeightErrorRadius(), 0.0);
  // The mean of the others is off by n / (n - 1) times the distance to the mean.
  const Eigen::ArrayXd e = (values.array() - values.mean()) * 20.0 / 19.0;
  const Eigen::RowVectorXd expected{
      {0.0, std::sqrt(e.square().mean()), e.mean(), e.abs().mean(), 1.0}};
  EXPECT_LT(Deviation(mean.ApproximateErrors(Eigen::MatrixXd::Zero(1, 2)), expected), 1e-14);
}

TEST(SurrogateErrors, OneSupportPointHasADensityOfUnitWidth) {
  GivenModel model(Eigen::RowVector2d(1.0, 2.0), Eigen::VectorXd::Ones(1),
                   Eigen::VectorXd::Zero(1));
  model.Build();
  model.BuildErrors();
  EXPECT_EQ(model.GetPointsRadiiMean(), 0.0);
  // h^2 = r = 2.
  EXPECT_NEAR(model.ApproximateErrors(Eigen::RowVector2d(2.0, 3.0))(0, kDensity), 0.01, 1e-15);
}

TEST(SurrogateErrors, BuildsOnlyWhatIsMissing) {
  GivenModel model = RandomModel(20, 2);
  const auto build = [&] { model.BuildErrors(); };
  EXPECT_EQ(MessageOfExactly<std::logic_error>(build), "Surrogate::BuildErrors - need build first");
  model.Build();
  const IndexVector halves = IndexVector::LinSpaced(20, 0, 1);
  const IndexVector quarters = IndexVector::LinSpaced(20, 0, 3);
  ASSERT_TRUE(model.BuildErrors(halves));
  ASSERT_TRUE(model.BuildErrors(halves));
  ASSERT_TRUE(model.BuildErrors());
  EXPECT_EQ(model.num_validations, 1);
  ASSERT_TRUE(model.BuildErrors(quarters));
  EXPECT_EQ(model.num_validations, 2);
  EXPECT_EQ(model.GetSubsets(), quarters);

  // A change of a transform ends all of it; without residuals the stored groups serve.
  model.SetValueTransform(TransformType::kNone, {});
  EXPECT_EQ(model.GetResiduals().size(), 0);
  EXPECT_EQ(model.GetPointsRadiiMean(), 0.0);
  EXPECT_EQ(MessageOfExactly<std::logic_error>(build), "Surrogate::BuildErrors - need build first");
  model.ApproximatePrognosis();
  EXPECT_EQ(model.last_subsets, quarters);
}

TEST(SurrogateErrors, RefusesWhatDoesNotFit) {
  GivenModel model = RandomModel(20, 2);
  const auto errors_at = [&](Eigen::Index m) {
    return [&model, m] { model.ApproximateErrors(Eigen::MatrixXd(1, m)); };
  };
  const std::string width = "needs same number of input dimension (3) as support points (2)";
  const std::string errors_first = "Surrogate ApproximateErrors needs BuildErrors first";
  support::ExpectRefusals<utils::runtime_error>({
      {errors_at(3), "Surrogate approximate errors " + width},
      {errors_at(2), errors_first},
      {[&] { model.ApproximateGradients(Eigen::MatrixXd(1, 3)); },
       "Surrogate approximate " + width},
  });
  model.Build();
  model.BuildErrors();
  model.SetSupportData(support::UniformPoints(3, 3, 1), support::UniformVector(3, 1));
  support::ExpectRefusals<utils::runtime_error>({{errors_at(3), errors_first}});
  model.SetSupportData(Eigen::MatrixXd(), {});
  const std::string missing = "Surrogate: support point data is missing";
  support::ExpectRefusals<std::logic_error>({{[&] { model.ApproximatePrognosis(); }, missing},
                                             {[&] { model.ApproximateLeaveOneOut(); }, missing}});
}

TEST(SurrogateGradients, AreThoseOfAQuadratic) {
  // Central differences of a quadratic have no truncation error. Input 2 is not in the model.
  const Eigen::MatrixXd points = 10.0 * support::UniformPoints(40, 3, 1).array() + 5.0;
  const auto f = [](const Eigen::ArrayXXd& x) -> Eigen::VectorXd {
    return 1.0 + 2.0 * x.col(0) - 3.0 * x.col(1).square() + 0.5 * x.col(0) * x.col(1);
  };
  LinearRegressionSettings settings(3);
  settings.SetOrder(2);
  settings.SetVariableSelection({true, true, false});
  LinearRegression model(points, f(points), settings);
  ASSERT_TRUE(model.Build());
  const Eigen::MatrixXd x = 10.0 * support::UniformPoints(5000, 3, 2).array() + 5.0;
  Eigen::MatrixXd expected = Eigen::MatrixXd::Zero(x.rows(), 3);
  expected.col(0) = 2.0 + 0.5 * x.col(1).array();
  expected.col(1) = -6.0 * x.col(1).array() + 0.5 * x.col(0).array();
  // Values of about 1e2 with 1e-13 of rounding, over steps of 1e-3.
  EXPECT_LT(Deviation(model.ApproximateGradients(x), expected), 1e-9);
}

TEST(SurrogateGradients, AreZeroWithoutARangeOfTheInput) {
  Eigen::MatrixXd points = support::UniformPoints(9, 2, 1);
  points.col(1).setConstant(3.0);
  const GivenModel model(points, support::UniformVector(9, 2), support::UniformVector(9, 3));
  const Eigen::MatrixXd gradients = model.ApproximateGradients(points);
  EXPECT_EQ(gradients.col(1), Eigen::VectorXd::Zero(9));
  EXPECT_LT(Deviation(gradients.col(0), Eigen::VectorXd::Ones(9)), 1e-10);
}

TEST(Surrogate, InitializeSaysThatTheSettingsAreWrong) {
  GivenModel model = RandomModel(5, 2);
  const auto log = boost::make_shared<utils::log::VectorLog>();
  model.SetLogger(log);
  const std::string expected =
      "no settings\nThe surrogate can not be initialized. An error in the settings is very likely.";
  EXPECT_ERROR(utils::runtime_error, expected, model.Initialize(LinearRegressionSettings(2)));
  ASSERT_EQ(log->GetLines().size(), 1u);
  EXPECT_EQ(log->GetLines()[0].first, utils::log::kError);
  EXPECT_EQ(log->GetLines()[0].second, std::wstring(expected.begin(), expected.end()));
}

}  // namespace
}  // namespace corvath::math::metamodel
