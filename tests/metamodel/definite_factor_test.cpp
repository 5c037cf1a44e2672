#include "metamodel/kriging/definite_factor.h"

#include "support/points.h"
#include "support/testing.h"

#include <Eigen/LU>

using corvath::math::metamodel::DefiniteFactor;

TEST(DefiniteFactor, AgreesWithTheInverse) {
  for (const Eigen::Index n : {1, 7, 64, 65, 150}) {  // around the size that is halved
    const Eigen::MatrixXd half = support::UniformPoints(n, n, 3);
    const Eigen::MatrixXd matrix = half * half.transpose() + Eigen::MatrixXd::Identity(n, n);
    const Eigen::MatrixXd inverse = matrix.inverse();
    DefiniteFactor factor;
    ASSERT_TRUE(factor.Compute(matrix));
    const Eigen::MatrixXd root = factor.InverseRoot();
    Eigen::MatrixXd lower;
    factor.InverseLower(lower);
    lower.triangularView<Eigen::StrictlyUpper>() = lower.transpose();
    // The condition of the matrix is below n^2.
    EXPECT_LT(support::Deviation(root.transpose() * root, inverse), 1e-11) << n;
    EXPECT_LT(support::Deviation(lower, inverse), 1e-11) << n;
    EXPECT_LT(support::Deviation(factor.Solve(half), inverse * half), 1e-11) << n;
    EXPECT_NEAR(factor.LogDeterminant(), std::log(matrix.determinant()), 1e-8);
  }
}

TEST(DefiniteFactor, ServesWithinTheRounding) {
  // S B S with B = (1 - c) I + c J and c = 1 - 2^-49: regular, but only just, and exact in doubles.
  // B^-1 = (I - c / (1 + 2c) J) / (1 - c), det B = (1 - c)^2 (1 + 2c). The diagonal of S makes the
  // pivots come in the order 3, 1, 2, a permutation that is not its own inverse.
  const double c = 1.0 - 0x1p-49;
  const Eigen::Matrix3d ones = Eigen::Matrix3d::Ones(), unit = Eigen::Matrix3d::Identity();
  const Eigen::DiagonalMatrix<double, 3> s(2.0, 1.0, 4.0), s_inverse(0.5, 1.0, 0.25);
  const Eigen::Matrix3d matrix = s * ((1.0 - c) * unit + c * ones) * s;
  const Eigen::Matrix3d inverse =
      s_inverse * ((unit - c / (1.0 + 2.0 * c) * ones) / (1.0 - c)) * s_inverse;
  DefiniteFactor factor;
  ASSERT_TRUE(factor.Compute(matrix));
  EXPECT_NEAR(factor.LogDeterminant(), std::log(64.0 * 0x1p-98 * (1.0 + 2.0 * c)), 1e-12);
  EXPECT_TRUE(factor.Solve(unit).isApprox(inverse, 1e-12));
  const Eigen::MatrixXd root = factor.InverseRoot();
  EXPECT_TRUE((root.transpose() * root).isApprox(inverse, 1e-12));
  Eigen::MatrixXd lower;
  factor.InverseLower(lower);
  EXPECT_NEAR(lower(1, 0) / inverse(1, 0), 1.0, 1e-12);
}

TEST(DefiniteFactor, RefusesWhatIsNotDefinite) {
  DefiniteFactor factor;
  EXPECT_FALSE(factor.Compute(Eigen::Matrix2d::Ones()));
  EXPECT_FALSE(factor.Compute(Eigen::Matrix2d{{1.0, 2.0}, {2.0, 1.0}}));
  EXPECT_FALSE(factor.Compute(Eigen::Matrix2d{{1.0, 0.5}, {0.5, std::nan("")}}));
  EXPECT_FALSE(factor.Compute(Eigen::Matrix2d{{1.0, 0.5}, {std::nan(""), 1.0}}));
  EXPECT_TRUE(factor.Compute(Eigen::Matrix2d::Identity()));  // an object may be used again
}
