#include "optimizer/merit_function.h"

#include "optimizer/quasi_newton.h"
#include "support/testing.h"

#include <Eigen/Dense>

using corvath::algorithm::optimizer::MeritFunction, corvath::algorithm::optimizer::UpdateDampedBfgs;

namespace {

TEST(MeritFunction, HasTheSlopesOfItsValue) {
  // f = |x|^2 / 2 and g = A x + b, between bounds, at points where some constraints are active.
  constexpr Eigen::Index n = 4, m = 5, num_equalities = 2;
  std::mt19937 generator(1);
  std::normal_distribution<double> normal;
  const auto draw = [&](Eigen::Index rows, Eigen::Index cols) -> Eigen::MatrixXd {
    return Eigen::MatrixXd::Zero(rows, cols).unaryExpr([&](double) { return normal(generator); });
  };
  for (int trial = 0; trial < 20; ++trial) {
    const Eigen::MatrixXd a = draw(m, n);
    const Eigen::VectorXd b = draw(m, 1), x = draw(n, 1), direction = draw(n, 1);
    const Eigen::VectorXd v = draw(m + 2 * n, 1), u = draw(m + 2 * n, 1);
    const Eigen::VectorXd r = draw(m + 2 * n, 1).array().abs() + 0.1;
    const Eigen::VectorXd lower = Eigen::VectorXd::Constant(n, -1.0);
    const Eigen::VectorXd upper = Eigen::VectorXd::Constant(n, 0.5);
    const MeritFunction merit(num_equalities, lower, upper, v, r);
    const auto value = [&](double along_x, double along_v) {
      const Eigen::VectorXd at = x + along_x * direction;
      const Eigen::VectorXd g = a * at + b;
      return merit.Value(0.5 * at.squaredNorm(), g, at, u, along_v);
    };
    const Eigen::VectorXd g = a * x + b;
    Eigen::VectorXd weights(m), gradient(n);
    merit.Gradient(x, {a.data(), m, n, Eigen::OuterStride<>(m)}, g, x, weights, gradient);
    // Quadratic pieces with continuous slopes: central differences are off by no more than the step,
    // where a piece ends within it.
    const double h = 1e-6;
    EXPECT_NEAR(gradient.dot(direction), (value(h, 0.0) - value(-h, 0.0)) / (2.0 * h), 1e-4);
    EXPECT_NEAR(merit.MultiplierSlope(g, x, u), (value(0.0, h) - value(0.0, -h)) / (2.0 * h), 1e-4);
  }
  // An infinite bound adds nothing.
  const Eigen::VectorXd zero = Eigen::VectorXd::Zero(1), none(0);
  const Eigen::VectorXd far = Eigen::VectorXd::Constant(1, std::numeric_limits<double>::max());
  const Eigen::VectorXd below = -far;
  const Eigen::VectorXd v = Eigen::VectorXd::Zero(2), r = Eigen::VectorXd::Constant(2, 0.01);
  EXPECT_EQ(MeritFunction(0, below, far, v, r).Value(7.0, none, zero, v, 1.0), 7.0);
  EXPECT_EQ(MeritFunction(0, below, far, v, r).MultiplierSlope(none, zero, v), 0.0);
}

TEST(DampedBfgs, KeepsTheSecantConditionOrAFifthOfTheCurvature) {
  const Eigen::Matrix3d start{{4.0, 1.0, 0.0}, {1.0, 3.0, 0.5}, {0.0, 0.5, 2.0}};
  const Eigen::Vector3d step(1.0, -2.0, 0.5);
  const double curvature = step.dot(start * step);
  Eigen::VectorXd work(3);
  for (const double share : {3.0, 0.5, 0.1, 0.0, -5.0}) {  // of the curvature that y shows
    const Eigen::Vector3d given = share * curvature / step.squaredNorm() * step;
    Eigen::MatrixXd b = start;
    Eigen::VectorXd y = given;
    ASSERT_TRUE(UpdateDampedBfgs(b, step, y, work));
    EXPECT_LT((b * step - y).norm(), 1e-12);
    EXPECT_NEAR(step.dot(b * step), std::max(share, 0.2) * curvature, 1e-12 * curvature);
    if (share > 0.2) {
      EXPECT_EQ(y, given);
    }
    EXPECT_EQ(b.llt().info(), Eigen::Success) << share;
  }
  // No curvature, no update; curvature below the smallest double is reported.
  Eigen::MatrixXd b = Eigen::MatrixXd::Zero(1, 1);
  Eigen::VectorXd one = Eigen::VectorXd::Ones(1), y = one, product(1);
  EXPECT_TRUE(UpdateDampedBfgs(b, one, y, product));
  EXPECT_EQ(b(0, 0), 0.0);
  b(0, 0) = std::numeric_limits<double>::denorm_min();
  y.setZero();
  EXPECT_FALSE(UpdateDampedBfgs(b, one, y, product));
  EXPECT_EQ(b(0, 0), std::numeric_limits<double>::denorm_min());
}

}  // namespace
