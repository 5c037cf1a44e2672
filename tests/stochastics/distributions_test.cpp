#include "stochastics/normal_quantile.h"
#include "stochastics/rv_factory.h"

#include <boost/math/distributions.hpp>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

namespace {

using namespace corvath::algorithm;
namespace types = corvath::enums::RandomVariable;
using Eigen::VectorXd;

boost::shared_ptr<RV> WithParameters(int type, const std::vector<double>& values) {
  const auto rv = RVFactory::GetInstance().Create(type);
  rv->SetParameters(
      Eigen::Map<const VectorXd>(values.data(), static_cast<Eigen::Index>(values.size())));
  return rv;
}

boost::shared_ptr<RV> WithStats(int type, const std::vector<double>& values) {
  const auto rv = RVFactory::GetInstance().Create(type);
  rv->SetStats(Eigen::Map<const VectorXd>(values.data(), static_cast<Eigen::Index>(values.size())));
  return rv;
}

/// Variables with a density, away from the defaults.
struct Sample {
  int type;
  std::vector<double> parameters;
};
const Sample kContinuous[] = {
    {types::NORMAL, {-3.0, 2.0}},        {types::UNIFORM, {-1.0, 4.0}},
    {types::LOGNORMAL, {0.5, 0.4}},      {types::EXPONENTIAL, {2.0, -1.0}},
    {types::GUMBEL, {10.0, 2.0}},        {types::BETA, {1.0, 5.0, 2.0, 3.5}},
    {types::BETA, {0.0, 2.0, 1.0, 1.0}},
};

/// Integral of f times the density: between quantiles that get denser towards the tails, and from
/// the outermost ones on to where nothing is left.
template <class Function>
double Expectation(const RV& rv, Function f) {
  std::vector<double> ends;
  const double inner[] = {1e-9, 1e-7, 1e-5, 1e-3,  0.02,       0.1,        0.3,       0.5,
                          0.7,  0.9,  0.98, 0.999, 1.0 - 1e-5, 1.0 - 1e-7, 1.0 - 1e-9};
  for (const double p : inner) ends.push_back(rv.InverseCDF(p));
  const double reach = ends.back() - ends.front();
  ends.push_back(std::min(ends.back() + 4.0 * reach, rv.GetUpperBound()));
  ends.insert(ends.begin(), std::max(ends.front() - 4.0 * reach, rv.GetLowerBound()));
  double sum = 0.0;
  for (std::size_t i = 0; i + 1 < ends.size(); ++i)
    if (ends[i] < ends[i + 1])
      sum += boost::math::quadrature::gauss_kronrod<double, 61>::integrate(
          [&](double x) { return f(x) * rv.PDF(x); }, ends[i], ends[i + 1], 8, 1e-11);
  return sum;
}

TEST(Distributions, MomentsAreThoseOfTheDensity) {
  for (const Sample& sample : kContinuous) {
    const auto rv = WithParameters(sample.type, sample.parameters);
    const VectorXd& stats = rv->GetStats();
    const double tolerance = 1e-7;  // what lies beyond the outermost quantiles
    SCOPED_TRACE(sample.type);
    EXPECT_NEAR(Expectation(*rv, [](double) { return 1.0; }), 1.0, tolerance);
    EXPECT_NEAR(Expectation(*rv, [](double x) { return x; }), stats(0),
                tolerance * (std::abs(stats(0)) + stats(1)));
    const auto central = [&](int power) {
      return Expectation(*rv, [&](double x) { return std::pow((x - stats(0)) / stats(1), power); });
    };
    EXPECT_NEAR(central(2), 1.0, tolerance * 10.0);
    const auto names = rv->GetMomentNames();
    if (names.size() > 2 && names[2] == L"Skewness") {
      EXPECT_NEAR(central(3), stats(2), 1e-5);
    }
    if (names.size() > 3 && names[3] == L"Excess kurtosis") {
      EXPECT_NEAR(central(4) - 3.0, stats(3), 1e-4);
    }
  }
}

TEST(Distributions, InverseUndoesTheDistributionFunction) {
  for (const Sample& sample : kContinuous) {
    const auto rv = WithParameters(sample.type, sample.parameters);
    SCOPED_TRACE(sample.type);
    for (const double p : {1e-8, 1e-3, 0.1, 0.37, 0.5, 0.9, 0.999, 1.0 - 1e-8}) {
      const double x = rv->InverseCDF(p);
      EXPECT_NEAR(rv->CDF(x), p, 1e-12 * std::max(1.0, 1e-3 / rv->PDF(x))) << p;
      EXPECT_LE(rv->GetLowerBound(), x);
      EXPECT_GE(rv->GetUpperBound(), x);
    }
    for (const double p : {0.05, 0.5, 0.95}) {
      const double x = rv->InverseCDF(p) + 1e-3 * rv->GetStats()(1);
      EXPECT_NEAR(rv->InverseCDF(rv->CDF(x)), x, 1e-9 * (std::abs(x) + rv->GetStats()(1))) << p;
      // The density is the slope of the distribution function.
      const double h = 1e-5 * rv->GetStats()(1);
      EXPECT_NEAR((rv->CDF(x + h) - rv->CDF(x - h)) / (2.0 * h), rv->PDF(x), 1e-6 * rv->PDF(x));
    }
    EXPECT_TRUE(std::isfinite(rv->InverseCDF(0.0)) && std::isfinite(rv->InverseCDF(1.0)));
    EXPECT_LE(rv->InverseCDF(0.0), rv->InverseCDF(1e-9));
    EXPECT_TRUE(std::isnan(rv->InverseCDF(std::nan(""))));
    EXPECT_EQ(rv->PDF(HUGE_VAL), 0.0);
    EXPECT_EQ(rv->PDF(-HUGE_VAL), 0.0);
    EXPECT_EQ(rv->CDF(-HUGE_VAL), 0.0);
    EXPECT_GE(rv->CDF(HUGE_VAL), 1.0 - 1e-10);
  }
}

template <class Distribution>
void ExpectSame(const RV& rv, const Distribution& reference, double shift = 0.0,
                double scale = 1.0) {
  SCOPED_TRACE(rv.GetTypeId());
  for (const double p : {1e-6, 0.01, 0.3, 0.5, 0.8, 0.99, 1.0 - 1e-6}) {
    const double z = quantile(reference, p);
    const double x = shift + scale * z;
    EXPECT_NEAR(rv.InverseCDF(p), x, 1e-10 * (1.0 + std::abs(x))) << p;
    EXPECT_NEAR(rv.CDF(x), p, 1e-12) << p;
    EXPECT_NEAR(rv.PDF(x), pdf(reference, z) / scale, 1e-10 * pdf(reference, z) / scale) << p;
  }
  EXPECT_NEAR(rv.GetStats()(0), shift + scale * mean(reference), 1e-13 * (1.0 + std::abs(shift)));
  EXPECT_NEAR(rv.GetStats()(1), scale * standard_deviation(reference), 1e-13 * scale);
}

TEST(Distributions, AgreeWithBoostWhereTheyCoincide) {
  using namespace boost::math;
  ExpectSame(*WithParameters(types::NORMAL, {-3.0, 2.0}), normal(-3.0, 2.0));
  ExpectSame(*WithParameters(types::UNIFORM, {-1.0, 4.0}), uniform(-1.0, 4.0));
  ExpectSame(*WithParameters(types::EXPONENTIAL, {2.0, -1.0}), exponential(0.5), -1.0);
  ExpectSame(*WithParameters(types::GUMBEL, {10.0, 2.0}), extreme_value(10.0, 2.0));
  const beta_distribution<> beta(2.5, 3.5);
  const auto rv = WithParameters(types::BETA, {1.0, 5.0, 2.5, 3.5});
  // Next to its ends the density is cut off, so not at 1e-6.
  EXPECT_NEAR(rv->PDF(2.0), pdf(beta, 0.25) / 4.0, 1e-14);
  EXPECT_NEAR(rv->CDF(2.0), cdf(beta, 0.25), 1e-14);
  EXPECT_NEAR(rv->InverseCDF(0.3), 1.0 + 4.0 * quantile(beta, 0.3), 1e-13);
  EXPECT_NEAR(rv->GetStats()(2), skewness(beta), 1e-14);
  EXPECT_NEAR(rv->GetStats()(3), kurtosis_excess(beta), 1e-14);
  // The lognormal's density begins six standard deviations below the mean, here below 0.
  ExpectSame(*WithParameters(types::LOGNORMAL, {0.5, 0.4}), lognormal(0.5, 0.4));
}

/// Moments over the allowed range, among them those that cancel in the textbook forms.
struct Fit {
  int type;
  std::vector<double> moments;
  double tolerance;
};

TEST(Distributions, FitsReturnToTheGivenMoments) {
  const Fit fits[] = {
      {types::NORMAL, {-5.0, 0.1}, 0.0},
      {types::UNIFORM, {1000.0, 1e-3}, 1e-9},
      {types::LOGNORMAL, {1.0, 1.0}, 1e-14},
      {types::LOGNORMAL, {1e5, 0.1}, 1e-9},  // coefficient 1e-6; exp of mu near 11.5 costs digits
      {types::LOGNORMAL, {1e-3, 1e9}, 1e-12},
      {types::EXPONENTIAL, {3.0, 7.0}, 0.0},
      {types::GUMBEL, {20.0, 3.0}, 0.0},
      {types::BETA, {3.0, 0.5, 0.3, -0.5}, 1e-12},
      {types::BETA, {3.0, 0.5, -1.2, 1.0}, 1e-12},
      {types::BETA, {-1e3, 1e-3, 0.0, -1.0}, 1e-9},
  };
  for (const Fit& fit : fits) {
    SCOPED_TRACE(fit.type);
    const auto rv = WithStats(fit.type, fit.moments);
    // From the parameters alone, since the moments may be held as they were given.
    const VectorXd parameters = rv->GetParameters();
    rv->Reset();
    rv->SetParameters(parameters);
    for (std::size_t i = 0; i < fit.moments.size(); ++i)
      EXPECT_NEAR(rv->GetStats()(static_cast<Eigen::Index>(i)), fit.moments[i],
                  (fit.tolerance + 1e-12) * std::max(std::abs(fit.moments[i]), i < 2 ? 0.0 : 1.0))
          << i;
  }
}

TEST(Distributions, ProbabilitiesOfQuantilesAreClampedWhereTheSupportIsOpen) {
  const double z = boost::math::quantile(boost::math::normal(), 1e-10);  // -6.3613
  EXPECT_NEAR(WithParameters(types::NORMAL, {1.0, 2.0})->InverseCDF(0.0), 1.0 + 2.0 * z, 1e-12);
  EXPECT_NEAR(corvath::math::NormalQuantile(1.0), -z, 1e-6);  // 1 - 1e-10 is not exact
  EXPECT_EQ(WithParameters(types::UNIFORM, {3.0, 4.0})->InverseCDF(0.0), 3.0);
  EXPECT_EQ(WithParameters(types::EXPONENTIAL, {1.0, 0.0})->CDF(1e9), 1.0 - 1e-10);
  EXPECT_NEAR(corvath::math::NormalCdf(-38.0), 2.885428360068e-316, 1e-319);  // a subnormal
}

TEST(Distributions, BetaNextToItsEndsAndLimits) {
  const auto flat = WithParameters(types::BETA, {0.0, 1.0, 1.0, 1.0});
  for (const double u : {0.0, 1e-9, 0.5, 1.0}) EXPECT_NEAR(flat->PDF(u), 1.0, 1e-15);
  EXPECT_EQ(WithParameters(types::BETA, {0.0, 1.0, 2.0, 2.0})->PDF(1e-6), 0.0);
  EXPECT_GT(WithParameters(types::BETA, {0.0, 1.0, 2.0, 2.0})->PDF(2e-6), 0.0);
  // No beta distribution is symmetric with kurtosis 0: the nearest is taken, k = -0.01, where
  // nu = (6 k + 12) / (-2 k) = 597.
  const auto symmetric = WithStats(types::BETA, {2.0, 1.0, 0.0, 0.0});
  EXPECT_NEAR(symmetric->GetParameters()(2), 298.5, 1e-9);
  EXPECT_NEAR(symmetric->GetParameters()(3), 298.5, 1e-9);
  EXPECT_NEAR(symmetric->GetStats()(3), -0.01, 1e-12);
  EXPECT_NEAR(symmetric->GetStats()(1), 1.0, 1e-12);
  for (const double skewness : {1e3, -1e8, 1e200}) {
    const auto extreme = WithStats(types::BETA, {2.0, 1.0, skewness, 0.0});
    EXPECT_TRUE(extreme->GetParameters().allFinite() && extreme->GetStats().allFinite());
    EXPECT_GT(extreme->GetStats()(2) * skewness, 0.0);
  }
}

}  // namespace
