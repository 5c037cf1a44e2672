#include "metamodel/thin_plate_splines.h"

#include "support/testing.h"

#include <Eigen/Dense>

using namespace corvath::math::metamodel;
using corvath::math::transform::TransformType;

namespace {

Eigen::MatrixXd RandomPoints(Eigen::Index n, Eigen::Index m) {
  std::srand(3);
  return Eigen::MatrixXd::Random(n, m);
}

Eigen::VectorXd Wave(const Eigen::MatrixXd& x) {
  return (2.0 * x.col(0)).array().sin() + x.col(1).array().square();
}

}  // namespace

TEST(ThinPlateSplines, SolvesTheRegularisedSystem) {
  // Without a coordinate transform: by QR of the system as the definition states it.
  const Eigen::MatrixXd p = RandomPoints(25, 2);
  const Eigen::VectorXd values = Wave(p);
  SurrogateTPS model(p, values);
  model.SetCoordTransform(TransformType::kNone, {});
  ASSERT_TRUE(model.Build());
  Eigen::MatrixXd system = Eigen::MatrixXd::Zero(28, 28);
  double sum = 0.0;
  for (Eigen::Index i = 0; i < 25; ++i)
    for (Eigen::Index j = 0; j < 25; ++j) {
      const double r = (p.row(i) - p.row(j)).norm();
      sum += r;
      if (r > 0.0) system(i, j) = r * r * std::log(r);
    }
  for (Eigen::Index i = 0; i < 25; ++i) system(i, i) = sum * sum * 1e-8;
  system.block(0, 25, 25, 1).setOnes();
  system.block(0, 26, 25, 2) = p;
  system.block(25, 0, 3, 25) = system.block(0, 25, 25, 3).transpose();
  Eigen::VectorXd right = Eigen::VectorXd::Zero(28);
  right.head(25) = values;
  const Eigen::VectorXd c = system.colPivHouseholderQr().solve(right);

  const Eigen::MatrixXd x = 1.5 * RandomPoints(300, 2);
  const Eigen::VectorXd predicted = model.Approximate(x);
  for (Eigen::Index k = 0; k < x.rows(); ++k) {
    double expected = c(25) + x.row(k) * c.tail(2);
    for (Eigen::Index i = 0; i < 25; ++i)
      expected += c(i) * model.Phi((x.row(k) - p.row(i)).norm());
    ASSERT_NEAR(predicted(k), expected, 1e-9);
  }
  EXPECT_TRUE(std::isnan(model.Approximate(Eigen::RowVector2d(std::nan(""), 0.0))(0)));
  EXPECT_EQ(model.Phi(0.0), 0.0);
  EXPECT_NEAR(model.Phi(std::exp(1.0)), std::exp(2.0), 1e-14);
  EXPECT_EQ(model.GetName(true), L"Thin Plate Splines");
  EXPECT_EQ(model.GetDescription(), model.GetName(false));
}
