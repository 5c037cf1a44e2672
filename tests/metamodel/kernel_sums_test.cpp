#include "metamodel/simd/kernel_sums.h"

#include "metamodel/families.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/level_test.h"

#include <Eigen/Core>

using namespace corvath::math::metamodel;

namespace {

using KernelSums = LevelTest<simd::KernelRoutines, simd::GetAllKernelRoutines>;

simd::ExpKernel Job(const Eigen::MatrixXd& points, const Eigen::MatrixXd& x,
                    const Eigen::VectorXd& factors) {
  return {points.data(), points.rows(), points.rows(),  x.data(),           x.rows(),
          x.rows(),      points.cols(), factors.data(), factors.size() == 1};
}

/// The definition, one pair at a time.
double Weight(const Eigen::MatrixXd& points, Eigen::Index i, const Eigen::MatrixXd& x,
              Eigen::Index r, const Eigen::VectorXd& factors) {
  double exponent = 0.0;
  for (Eigen::Index j = 0; j < points.cols(); ++j) {
    const double d = x(r, j) - points(i, j);
    exponent += factors(factors.size() == 1 ? 0 : j) * d * d;
  }
  return std::exp(exponent);
}

}  // namespace

TEST_P(KernelSums, AgreeWithTheDefinitionForAllSizes) {
  for (const Eigen::Index num_inputs : {1, 3, 10})
    for (const Eigen::Index n : {1, 2, 3, 7, 8, 9, 127, 128, 131, 300})
      for (const Eigen::Index num_x : {1, 3, 4, 5, 9})
        for (const Eigen::Index num_factors : {Eigen::Index(1), num_inputs}) {
          const Eigen::MatrixXd points = Eigen::MatrixXd::Random(n, num_inputs);
          const Eigen::MatrixXd x = Eigen::MatrixXd::Random(num_x, num_inputs);
          const Eigen::VectorXd factors = -Eigen::VectorXd::Random(num_factors).cwiseAbs() * 3.0;
          const Eigen::VectorXd values = Eigen::VectorXd::Random(n);
          const simd::ExpKernel job = Job(points, x, factors);
          Eigen::VectorXd sums(num_x);
          routines_->weighted_sums(job, values.data(), sums.data());
          Eigen::MatrixXd weights = Eigen::MatrixXd::Constant(n + 2, num_x, 7.0);
          routines_->weights(job, weights.data(), n + 2);
          for (Eigen::Index r = 0; r < num_x; ++r) {
            double sum = 0.0;
            double magnitude = 0.0;
            for (Eigen::Index i = 0; i < n; ++i) {
              const double weight = Weight(points, i, x, r, factors);
              // The rounding of an exponent up to 120, and that of the exponential.
              ASSERT_NEAR(weights(i, r), weight, 1e-13 * weight);
              sum += weight * values(i);
              magnitude += weight * std::abs(values(i));
            }
            ASSERT_NEAR(sums(r), sum, 1e-13 * magnitude) << n << " points, " << num_x << " rows";
            ASSERT_EQ(weights.col(r).tail(2), Eigen::Vector2d(7.0, 7.0));  // nothing beyond
          }
          Eigen::VectorXd baseline(num_x);
          simd::kRoutinesBaseline.weighted_sums(job, values.data(), baseline.data());
          ASSERT_EQ(sums, baseline);  // to the bit
        }
}

TEST_P(KernelSums, AreExactAtSupportPointsAndVanishFarAway) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const double nan = std::nan("");
  const Eigen::MatrixXd points = Eigen::VectorXd::LinSpaced(21, 1e3, 1e3 + 20.0);
  const Eigen::VectorXd factors = Eigen::VectorXd::Constant(1, -1.0);
  Eigen::VectorXd x{{1e3 + 5.0, 0.0, kInfinity, -1e300, nan, 1e3 - 27.2}};
  Eigen::MatrixXd weights(21, 6);
  routines_->weights(Job(points, x, factors), weights.data(), 21);
  EXPECT_EQ(weights(5, 0), 1.0);
  for (const Eigen::Index far : {1, 2, 3}) EXPECT_EQ(weights.col(far).cwiseAbs().maxCoeff(), 0.0);
  EXPECT_TRUE(weights.col(4).array().isNaN().all());
  // Squares of 27.2 and more: below the smallest normal number the weights fade out gradually.
  EXPECT_GT(weights(0, 5), 0.0);
  EXPECT_LT(weights(0, 5), std::numeric_limits<double>::min());
  EXPECT_EQ(weights(1, 5), 0.0);

  const Eigen::VectorXd values = Eigen::VectorXd::Ones(21);
  Eigen::VectorXd sums(6);
  routines_->weighted_sums(Job(points, x, factors), values.data(), sums.data());
  EXPECT_EQ(sums.segment(1, 3), Eigen::Vector3d::Zero());
  EXPECT_TRUE(std::isnan(sums(4)));
}

TEST_P(KernelSums, ExponentialIsGoodToOneUnitInTheLastPlace) {
  for (const Eigen::Index count : {0, 1, 2, 7, 8, 20001}) {
    const Eigen::VectorXd x = Eigen::VectorXd::LinSpaced(count, -750.0, 709.0);
    Eigen::VectorXd values(count + 1);
    values << x, 7.0;
    routines_->exp(values.data(), count);
    for (Eigen::Index i = 0; i < count; ++i) {
      const long double expected = std::exp(static_cast<long double>(x(i)));
      const auto nearest = static_cast<double>(expected);
      const auto unit = std::nextafter(nearest, HUGE_VAL) - static_cast<long double>(nearest);
      ASSERT_LE(std::abs(values(i) - expected), unit) << x(i);
    }
    EXPECT_EQ(values(count), 7.0);
  }
  // Among others of their vectors, and behind the last whole ones.
  const Eigen::VectorXd special{{-1.0, std::nan(""), -HUGE_VAL, HUGE_VAL, 0.0, 709.1, -1e300}};
  const Eigen::VectorXd expected{{0.0, HUGE_VAL, 1.0, HUGE_VAL, 0.0}};
  Eigen::VectorXd values = special.replicate(5, 1);
  routines_->exp(values.data(), values.size());
  for (Eigen::Index first = 0; first < values.size(); first += special.size()) {
    EXPECT_NEAR(values(first), std::exp(-1.0), 1e-16);
    EXPECT_TRUE(std::isnan(values(first + 1)));
    EXPECT_EQ(values.segment(first + 2, 5), expected);
  }
}

INSTANTIATE_TEST_SUITE_P(Level, KernelSums, testing::Values(0, 1, 2));

TEST(Kernel, ExponentialsWeighOneAtThePointAndAThousandthAtTheRadius) {
  const KernelConstInflIsoExp iso(Eigen::VectorXd::Constant(1, 3.0));
  const KernelConstInflExp aniso(Eigen::Vector2d(3.0, 0.5));
  EXPECT_EQ(iso.EvaluateDistance(0.0), 1.0);
  EXPECT_NEAR(iso.EvaluateDistance(9.0), 0.001, 1e-16);
  EXPECT_NEAR(aniso.EvaluateVector(Eigen::Vector2d(-3.0, 0.0)), 0.001, 1e-16);
  EXPECT_NEAR(aniso.EvaluateVector(Eigen::Vector2d(3.0, 0.5)), 1e-6, 1e-19);
}

TEST(KernelBlock, AgreesWithEachKernelPointByPoint) {
  const Eigen::MatrixXd points = Eigen::MatrixXd::Random(37, 3);
  const Eigen::MatrixXd x = Eigen::MatrixXd::Random(6, 3);
  const Eigen::VectorXd values = Eigen::VectorXd::Random(37);
  const KernelConstInflExp anisotropic(Eigen::Vector3d(0.5, 1.0, 4.0));
  const KernelConstInflIsoExp isotropic(Eigen::VectorXd::Constant(1, 1.5));
  const KernelConstInflIsoReg regularised(Eigen::VectorXd::Constant(1, 1.5));
  const KernelNodalInflExp nodal(Eigen::VectorXd::Constant(1, 5.0));
  for (const KernelBase* kernel :
       std::initializer_list<const KernelBase*>{&anisotropic, &isotropic, &regularised, &nodal}) {
    KernelBlock block(*kernel, points);
    Eigen::VectorXd sums(6);
    block.WeightedSums(x, values, sums);
    Eigen::MatrixXd weights(37, 6);
    block.Weights(x, weights);
    for (Eigen::Index r = 0; r < 6; ++r) {
      Eigen::VectorXd expected(37);
      kernel->Weights(expected, x.row(r).transpose(), points);
      EXPECT_TRUE(weights.col(r).isApprox(expected, 1e-13));
      EXPECT_NEAR(sums(r), expected.dot(values), 1e-13 * expected.dot(values.cwiseAbs()));
    }
  }
  EXPECT_THROW(KernelBlock(KernelConstInflIsoExp(), points), std::domain_error);
  EXPECT_THROW(KernelBlock(anisotropic, points.leftCols(2)), std::domain_error);
}
