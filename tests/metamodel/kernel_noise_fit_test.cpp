#include "metamodel/kriging/kernel_noise_fit.h"

#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/plain_kriging.h"
#include "stochastics/normal_quantile.h"
#include "support/points.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>

namespace corvath::math::metamodel {
namespace {

Eigen::VectorXd Noise(Eigen::Index n, std::uint64_t seed) {
  return support::UniformVector(n, seed).unaryExpr([](double p) { return NormalQuantile(p); });
}

/// The objective by its formula: restricted likelihood and prior of the length scales.
double ObjectiveByFormula(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                          const Eigen::VectorXd& radii, double nugget) {
  const support::PlainKriging plain(points, values, radii, nugget);
  const auto n = static_cast<double>(points.rows());
  double objective = 0.5 * ((n - 1.0) * std::log(plain.sigma2 * n / (n - 1.0)) +
                            plain.log_determinant + std::log(plain.information));
  const double prior = std::sqrt(2.0) + 0.5 * std::log(static_cast<double>(points.cols()));
  for (const double radius : radii) {
    const double scale = std::log(radius / std::sqrt(-2.0 * std::log(0.001)));
    objective += 0.5 * std::pow(scale - prior, 2) / 3.0;
  }
  return objective;
}

TEST(KernelNoiseFit, FindsAMinimumOfTheObjective) {
  const Eigen::MatrixXd points = support::UniformPoints(60, 3, 1);
  const Eigen::VectorXd values = (5.0 * points.col(0)).array().sin() +
                                 points.col(1).array().square() + 0.2 * Noise(60, 2).array();
  for (const bool is_anisotropic : {false, true}) {
    const KernelWithNoise fit = FitKernelWithNoise(points, values, is_anisotropic, {});
    ASSERT_EQ(fit.radii.size(), is_anisotropic ? 3 : 1);
    EXPECT_NEAR(fit.objective, ObjectiveByFormula(points, values, fit.radii, fit.nugget), 1e-6);
    // No step of a tenth in any logarithm goes down by more than the accuracy of the search.
    for (Eigen::Index k = -1; k < fit.radii.size(); ++k)
      for (const double factor : {0.9, 1.1}) {
        Eigen::VectorXd radii = fit.radii;
        if (k >= 0) radii(k) *= factor;
        EXPECT_GT(ObjectiveByFormula(points, values, radii, fit.nugget * (k < 0 ? factor : 1.0)),
                  fit.objective - 0.01)
            << k << ", " << factor;
      }
  }
}

TEST(KernelNoiseFit, TheNuggetIsTheNoise) {
  // sigma^2 * nugget estimates the variance of the noise: of 300 normal numbers to 8 % (sd).
  constexpr double kDeviation = 0.3;
  const Eigen::MatrixXd points = support::UniformPoints(300, 2, 5);
  const Eigen::VectorXd values =
      (6.0 * points.col(0)).array().sin() + kDeviation * Noise(300, 6).array();
  OrdinaryKrigingSettings settings(2);
  settings.SetKernelType(KernelType::kConstInflExp);
  OrdinaryKriging model(points, values, settings);
  std::vector<Eigen::Index> rows(300);
  std::iota(rows.begin(), rows.end(), Eigen::Index{0});
  ASSERT_TRUE(model.BuildWithNoise(rows));
  EXPECT_NEAR(model.GetSigma2() * model.GetSettingsBase().GetNugget() / (kDeviation * kDeviation),
              1.0, 0.25);
  // The input that does nothing is far longer than the other.
  EXPECT_GT(model.GetSettingsBase().GetKernelParameter()(1),
            5.0 * model.GetSettingsBase().GetKernelParameter()(0));
}

TEST(KernelNoiseFit, RepeatedPointsAndPureNoiseHaveAFit) {
  Eigen::MatrixXd points = support::UniformPoints(20, 2, 7);
  points.bottomRows(10) = points.topRows(10);
  const KernelWithNoise noise = FitKernelWithNoise(points, Noise(20, 8), true, {});
  EXPECT_TRUE(std::isfinite(noise.objective));
  EXPECT_GT(noise.nugget, 0.1);
}

}  // namespace
}  // namespace corvath::math::metamodel
