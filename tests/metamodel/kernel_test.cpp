#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/kernels/kernels_nodal.h"
#include "support/points.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace corvath::math::metamodel {
namespace {

Eigen::VectorXd Radius(double radius) {
  return Eigen::VectorXd::Constant(1, radius);
}

Eigen::VectorXd WeightsOf(const KernelBase& kernel, const Eigen::VectorXd& x,
                          const Eigen::MatrixXd& points) {
  Eigen::VectorXd weights(points.rows());
  kernel.Weights(weights, x, points);
  return weights;
}

TEST(Kernel, ExponentialsWeighOneAtThePointAndAThousandthAtTheRadius) {
  const KernelConstInflIsoExp iso(Radius(3.0));
  const KernelConstInflExp aniso(Eigen::Vector2d(3.0, 0.5));
  EXPECT_EQ(iso.EvaluateDistance(0.0), 1.0);
  EXPECT_EQ(aniso.EvaluateVector(Eigen::Vector2d(0.0, 0.0)), 1.0);
  EXPECT_NEAR(iso.EvaluateDistance(9.0), 0.001, 1e-16);
  EXPECT_NEAR(aniso.EvaluateVector(Eigen::Vector2d(-3.0, 0.0)), 0.001, 1e-16);
  EXPECT_NEAR(aniso.EvaluateVector(Eigen::Vector2d(0.0, 0.5)), 0.001, 1e-16);
  // The exponents of both axes add up.
  EXPECT_NEAR(aniso.EvaluateVector(Eigen::Vector2d(3.0, 0.5)), 1e-6, 1e-19);
  EXPECT_EQ(iso.EvaluateDistance(HUGE_VAL), 0.0);
  EXPECT_TRUE(std::isnan(iso.EvaluateDistance(std::nan(""))));
}

TEST(Kernel, RegularisedIsPeakedAndCompact) {
  const KernelConstInflIsoReg kernel(Radius(2.0));
  EXPECT_NEAR(kernel.EvaluateDistance(0.0), 1e10 - 1.0 / (1.00001 * 1.00001), 1e-5);
  EXPECT_NEAR(kernel.EvaluateDistance(1.0), 1.0 / (0.25001 * 0.25001) - 1.0 / (1.00001 * 1.00001),
              1e-13);
  for (const double squared : {4.0, 4.5, 1e300, HUGE_VAL})
    EXPECT_EQ(kernel.EvaluateDistance(squared), 0.0) << squared;
  EXPECT_TRUE(std::isnan(kernel.EvaluateDistance(std::nan(""))));
}

TEST(Kernel, NodalWeighsTheNthNearestAThousandth) {
  const Eigen::VectorXd squared{{4.0, 0.0, 25.0, 1.0}};
  const double cases[][2] = {{2.0, 1.0}, {2.9, 1.0}, {3.0, 4.0}, {4.0, 25.0}, {1e300, 25.0}};
  for (const auto& [parameter, reference] : cases) {
    const Eigen::VectorXd weights =
        KernelNodalInflExp(Radius(parameter)).EvaluateDistances(squared);
    for (Eigen::Index i = 0; i < squared.size(); ++i)
      EXPECT_NEAR(weights(i), std::pow(0.001, squared(i) / reference), 1e-15) << parameter;
  }
}

TEST(Kernel, WeightsOfAPointSetAreThoseOfItsRows) {
  const Eigen::MatrixXd points = support::UniformPoints(37, 3, 1);
  const Eigen::MatrixXd x = support::UniformPoints(2, 3, 2);
  const KernelConstInflExp aniso(Eigen::Vector3d(0.3, 1.0, 2.0));
  const KernelConstInflIsoExp iso(Radius(0.4));
  const KernelConstInflIsoReg reg(Radius(0.4));
  for (const KernelConstInfl* kernel :
       {static_cast<const KernelConstInfl*>(&aniso), static_cast<const KernelConstInfl*>(&iso),
        static_cast<const KernelConstInfl*>(&reg)}) {
    Eigen::VectorXd weights(points.rows());
    kernel->Weights(weights, x.row(1).transpose(), points);
    for (Eigen::Index i = 0; i < points.rows(); ++i) {
      const double expected = kernel->EvaluateVector((x.row(1) - points.row(i)).transpose());
      EXPECT_NEAR(weights(i), expected, 1e-14 * (1.0 + expected));
    }
    // On a support point the distance is exactly 0.
    EXPECT_EQ(WeightsOf(*kernel, points.row(5), points)(5),
              kernel->EvaluateVector(Eigen::Vector3d::Zero()));
  }
  const KernelNodalInflExp nodal(Radius(7.0));
  const Eigen::VectorXd squared = (points.rowwise() - x.row(0)).rowwise().squaredNorm();
  EXPECT_LT(
      support::Deviation(WeightsOf(nodal, x.row(0), points), nodal.EvaluateDistances(squared)),
      1e-14);
  // A NaN in the point makes every weight NaN, and never harms the selection.
  EXPECT_TRUE(
      WeightsOf(nodal, Eigen::Vector3d(0.0, std::nan(""), 0.0), points).array().isNaN().all());
}

}  // namespace
}  // namespace corvath::math::metamodel
