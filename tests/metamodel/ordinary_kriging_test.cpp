#include "metamodel/families.h"
#include "metamodel/plain_kriging.h"

#include <Eigen/Dense>

using namespace corvath::math::metamodel;
using support::PlainKriging;

namespace {

Eigen::VectorXd One(double value) {
  return Eigen::VectorXd::Constant(1, value);
}

/// A smooth positive function of three inputs on points of different scales.
struct Sample {
  explicit Sample(Eigen::Index n = 40) : points(n, 3), values(n) {
    std::srand(7);
    points = (Eigen::MatrixXd::Random(n, 3).array() + 1.0) * 0.5;
    points.col(1) = points.col(1) * 20.0 - Eigen::VectorXd::Constant(n, 5.0);
    for (Eigen::Index i = 0; i < n; ++i)
      values(i) = 3.0 + std::sin(3.0 * points(i, 0)) + 0.1 * points(i, 1) + std::exp(points(i, 2));
  }
  Eigen::MatrixXd points;
  Eigen::VectorXd values;
};

OrdinaryKrigingSettings Settings(KernelType type, const Eigen::VectorXd& parameter, double nugget) {
  OrdinaryKrigingSettings settings(3);
  settings.SetKernelType(type);
  settings.SetKernelParameter(parameter);
  settings.SetNugget(nugget);
  return settings;
}

struct Case {
  KernelType type;
  Eigen::VectorXd radii;
  double nugget;
};
std::vector<Case> BothKernels() {
  return {{KernelType::kConstInflIsoExp, One(1.2), 1e-4},
          {KernelType::kConstInflExp, Eigen::Vector3d(0.8, 2.0, 1.1), 1e-3}};
}

}  // namespace

TEST(OrdinaryKriging, MatchesTheDenseSystem) {
  const Sample sample;
  const Eigen::MatrixXd x = Sample(300).points;  // more rows than a block
  for (const Case& c : BothKernels()) {
    OrdinaryKriging model(sample.points, sample.values, Settings(c.type, c.radii, c.nugget));
    ASSERT_TRUE(model.Build());
    const PlainKriging plain(Scaled(sample.points, sample.points), sample.values, c.radii,
                             c.nugget);
    const Eigen::VectorXd predicted = model.Approximate(x);
    const Eigen::MatrixXd scaled = Scaled(x, sample.points);
    // The condition of the system, up to 1e5 with these nuggets, times the rounding.
    for (Eigen::Index i = 0; i < x.rows(); ++i)
      ASSERT_NEAR(predicted(i), plain.Predict(scaled.row(i)), 1e-9);
    EXPECT_NEAR(model.GetMean(), plain.mean, 1e-9);
    EXPECT_NEAR(model.GetSigma2(), plain.sigma2, 1e-9 * plain.sigma2);
    EXPECT_NEAR(model.GetLikelihood(), plain.likelihood, 1e-7);
    EXPECT_EQ(model.Approximate(Eigen::RowVector3d::Constant(1e6))(0), model.GetMean());
    EXPECT_EQ(model.Approximate(x.topRows(0)).size(), 0);
  }
}

TEST(OrdinaryKriging, LikelihoodGradientMatchesExtrapolatedDifferences) {
  const Sample sample(25);
  for (const Case& c : BothKernels()) {
    OrdinaryKriging model(sample.points, sample.values, Settings(c.type, c.radii, c.nugget));
    const Eigen::VectorXd gradient = model.LikelihoodGradient();  // builds first
    ASSERT_EQ(gradient.size(), 1 + c.radii.size());
    for (Eigen::Index k = 0; k < gradient.size(); ++k) {
      const auto likelihood_at = [&](double step) {
        Eigen::VectorXd radii = c.radii;
        double nugget = c.nugget;
        (k == 0 ? nugget : radii(k - 1)) *= std::pow(10.0, step);
        OrdinaryKriging moved(sample.points, sample.values, Settings(c.type, radii, nugget));
        EXPECT_TRUE(moved.Build());
        return moved.GetLikelihood();
      };
      const auto difference = [&](double h) {
        return (likelihood_at(h) - likelihood_at(-h)) / (2.0 * h);
      };
      const double h = 0.01;  // Richardson: the error is of fourth order in h
      const double expected = (4.0 * difference(h / 2.0) - difference(h)) / 3.0;
      EXPECT_NEAR(gradient(k), expected, 1e-6 * (1.0 + std::abs(expected))) << k;
    }
  }
}

TEST(OrdinaryKriging, FollowsAPlaneWithMoreAccuracyWhereItMatters) {
  const Sample sample;
  OrdinaryKriging model(sample.points, sample.values,
                        Settings(KernelType::kConstInflExp, Eigen::Vector3d(4.0, 5.0, 6.0), 0.1));
  ASSERT_TRUE(model.Build());
  const Eigen::MatrixXd points = Sample(100).points;
  const Eigen::VectorXd plane = points * Eigen::Vector3d(2.0, 0.1, -1.0);
  const auto largest = [&](Eigen::Index begin) {
    return (model.Approximate(points) - plane).segment(begin, 50).cwiseAbs().maxCoeff();
  };
  const Eigen::VectorXd ones = Eigen::VectorXd::Ones(100);
  ASSERT_TRUE(model.Follow(points, plane, ones));
  EXPECT_LT(std::max(largest(0), largest(50)), 0.01);  // of a range of 5
  // A step does not fit a smooth kernel: the half that hardly counts takes the deviation.
  Eigen::VectorXd step = plane;
  step.tail(50).array() += 1.0;
  Eigen::VectorXd importances = ones;
  importances.tail(50).setConstant(1e-6);
  ASSERT_TRUE(model.Follow(points, step, importances));
  EXPECT_LT(largest(0), 0.1);
  EXPECT_THROW(model.Follow(points, plane, ones.head(3)), std::logic_error);
}

TEST(OrdinaryKriging, RefusesASingularSystemAndKeepsWhatItHad) {
  Sample sample(10);
  OrdinaryKriging model(sample.points, sample.values,
                        Settings(KernelType::kConstInflIsoExp, One(1.0), 1e-6));
  ASSERT_TRUE(model.Build());
  const Eigen::VectorXd weights = model.GetKernelWeights();
  sample.points.row(4) = sample.points.row(2);
  model.SetSupportData(sample.points, sample.values);
  model.SetSettings(Settings(KernelType::kConstInflIsoExp, One(1.0), 0.0));
  EXPECT_FALSE(model.Build());
  EXPECT_FALSE(model.IsBuilt());
  EXPECT_EQ(model.GetKernelWeights(), weights);
  EXPECT_TRUE(model.IsSolvable());
}
