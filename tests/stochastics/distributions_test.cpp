#include "stochastics/distributions/beta_quantiles.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/special_functions.h"
#include "stochastics/variables.h"
#include "support/testing.h"

#include <boost/math/distributions.hpp>
#include <boost/math/quadrature/gauss_kronrod.hpp>
#include <boost/numeric/conversion/cast.hpp>

namespace {

using namespace corvath::algorithm;
using namespace support;
namespace types = corvath::enums::RandomVariable;
using Eigen::VectorXd;

const std::vector<VariableLine> kContinuous = LinesOf("density");

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
  // Kinks and jumps would spoil the quadrature.
  if (rv.GetTypeId() == types::MULTIUNIFORM || rv.GetTypeId() == types::TRIANGULAR)
    ends.insert(ends.end(), rv.GetParameters().begin(), rv.GetParameters().end());
  std::sort(ends.begin(), ends.end());
  double sum = 0.0;
  for (std::size_t i = 0; i + 1 < ends.size(); ++i)
    if (ends[i] < ends[i + 1])
      sum += boost::math::quadrature::gauss_kronrod<double, 61>::integrate(
          [&](double x) { return f(x) * rv.PDF(x); }, ends[i], ends[i + 1], 2, 1e-9);
  return sum;
}

TEST(Distributions, MomentsAreThoseOfTheDensity) {
  for (const VariableLine& sample : kContinuous) {
    const auto rv = WithParameters(sample.type, sample.numbers);
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
  for (const VariableLine& sample : kContinuous) {
    if (sample.type == types::KERNEL) continue;  // its search ends earlier
    const auto rv = WithParameters(sample.type, sample.numbers);
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
  ExpectSame(*WithParameters(types::WEIBULL, {3.0, 1.7}), weibull(1.7, 3.0));
  ExpectSame(*WithParameters(types::TRIANGULAR, {1.0, 2.0, 5.0}), triangular(1.0, 2.0, 5.0));
  const poisson_distribution<> poisson(7.3);
  const auto events = WithParameters(types::POISSON, {7.3});
  for (int k = 0; k < 40; ++k) {
    EXPECT_NEAR(events->PMF(k), pdf(poisson, k), 1e-14);
    EXPECT_NEAR(events->CDF(k + 0.5), cdf(poisson, k), 1e-14);
    EXPECT_EQ(events->InverseCDF(events->CDF(k)), k <= 29 ? k : events->InverseCDF(1.0));
  }
  // The lognormal's density begins six standard deviations below the mean, here below 0.
  ExpectSame(*WithParameters(types::LOGNORMAL, {0.5, 0.4}), lognormal(0.5, 0.4));
}

TEST(Distributions, FitsReturnToTheGivenMoments) {
  for (const auto& [type, moments, outcome] : LinesOf("fits")) {
    const double tolerance = std::stod(outcome);
    SCOPED_TRACE(type);
    const auto rv = WithStats(type, moments);
    // From the parameters alone, since the moments may be held as they were given.
    const VectorXd parameters = rv->GetParameters();
    rv->Reset();
    rv->SetParameters(parameters);
    for (std::size_t i = 0; i < moments.size(); ++i)
      EXPECT_NEAR(rv->GetStats()(static_cast<Eigen::Index>(i)), moments[i],
                  (tolerance + 1e-12) * std::max(std::abs(moments[i]), i < 2 ? moments[1] : 1.0))
          << i;
  }
}

TEST(Distributions, ProbabilitiesOfQuantilesAreClampedWhereTheSupportIsOpen) {
  const double z = boost::math::quantile(boost::math::normal(), 1e-10);  // -6.3613
  EXPECT_NEAR(WithParameters(types::NORMAL, {1.0, 2.0})->InverseCDF(0.0), 1.0 + 2.0 * z, 1e-12);
  EXPECT_NEAR(corvath::math::NormalQuantile(1.0), -z, 1e-6);  // 1 - 1e-10 is not exact
  EXPECT_EQ(WithParameters(types::EXPONENTIAL, {1.0, 0.0})->CDF(1e9), 1.0 - 1e-10);
  EXPECT_NEAR(corvath::math::NormalCdf(-38.0), 2.885428360068e-316, 1e-319);  // a subnormal
}

TEST(Distributions, NormalQuantileInvertsTheDistributionFunction) {
  const boost::math::normal_distribution<long double> normal;
  const auto expect_quantile = [&](double p) {
    const long double z = boost::math::quantile(normal, static_cast<long double>(p));
    const double actual = corvath::math::NormalQuantile(p);
    EXPECT_NEAR(static_cast<double>(actual - z), 0.0,
                1e-15 * std::max(1e-16, static_cast<double>(std::abs(z))))
        << p;
  };
  for (double p = 1.0001e-10; p < 0.5; p *= 1.003) {
    expect_quantile(p);
    expect_quantile(1.0 - p);
  }
  for (double distance = 1e-15; distance < 0.1; distance *= 3.0) expect_quantile(0.5 + distance);
  for (const double edge : {0.075, 0.925})
    for (const double p : {std::nextafter(edge, 0.0), edge, std::nextafter(edge, 1.0)})
      expect_quantile(p);
  EXPECT_EQ(corvath::math::NormalQuantile(0.5), 0.0);
  EXPECT_TRUE(std::isnan(corvath::math::NormalQuantile(std::nan(""))));
}

TEST(Distributions, ManyBetaQuantilesAreAsGoodAsOne) {
  // Errors against long double arithmetic, in roundings of the
  // value and of the probability: the largest one is at most the single quantile's, or a few.
  const double shapes[][2] = {{2.0, 3.0},     {0.5, 0.5},   {0.05, 4.0},    {1.0, 1.0},
                              {1.0, 5.0},     {300.0, 2.5}, {999.0, 999.0}, {100.0, 110.0},
                              {1000.0, 1e-3}, {1e5, 1e5},   {1e-3, 1e-3},   {1e8, 3.0}};
  for (const auto& [alpha, beta] : shapes) {
    SCOPED_TRACE(std::to_string(alpha) + " " + std::to_string(beta));
    const BetaQuantiles quantiles(alpha, beta);
    namespace policies = boost::math::policies;
    using Quiet = policies::policy<policies::overflow_error<policies::ignore_error>>;
    const boost::math::beta_distribution<long double, Quiet> distribution(alpha, beta);
    long double worst_one = 0.0L, worst_many = 0.0L;
    for (double u = -7.03; u < 7.1; u += 0.037) {
      const double p = corvath::math::ClampProbability(corvath::math::NormalCdf(u));
      const long double exact =
          p <= 0.5 ? boost::math::quantile(distribution, static_cast<long double>(p))
                   : boost::math::quantile(
                         boost::math::complement(distribution, 1.0L - static_cast<long double>(p)));
      const double one = corvath::math::IncompleteBetaInverse(alpha, beta, p);
      const double many = quantiles.FromGauss(u);
      const long double rounding =
          1e-16L * (exact + std::min(p, 1.0 - p) / boost::math::pdf(distribution, exact)) +
          std::numeric_limits<double>::denorm_min();
      worst_one = std::max(worst_one, std::abs(one - exact) / rounding);
      worst_many = std::max(worst_many, std::abs(many - exact) / rounding);
    }
    EXPECT_LE(worst_many, std::max(15.0L, worst_one));
    EXPECT_TRUE(std::isnan(quantiles.FromGauss(std::nan(""))));
    EXPECT_EQ(quantiles.FromGauss(HUGE_VAL), quantiles.FromGauss(40.0));
  }
}

TEST(Distributions, LargeShapesKeepTheirDigits) {
  // Beta: lower tail and density of shapes alpha and beta at sd standard deviations from the mean,
  // by quadrature in 60 digits.
  const struct {
    double alpha, beta, x, lower, density;
  } betas[] = {
      {540, 540, 0.5152074766168119, 0.8412327485203327, 15.91866248583225},
      {1e06, 1e06, 0.4992928933955901, 0.02275011845041229, 152.7096477980176},
      {3e06, 4e09, 0.0007496541845682521, 0.6915132197433333, 813759.7933372539},
      {1e10, 1e10, 0.49999646446609414, 0.1586552539362354, 68439.65606550581},
      {1e10, 1e10, 0.5000106066017175, 0.9986501019692977, 1253.516025728979},
      {1e10, 1e07, 0.9990008411239907, 0.3085097474077157, 1114837.379070896},
      {1e12, 1e12, 0.49999858578643763, 3.167124183428239e-5, 378.5290406796838},
      {7, 2e15, 2.177124344e-15, 0.1507412857553454, 243304812432044.8},
  };
  for (const auto& [alpha, beta, x, lower, density] : betas) {
    EXPECT_NEAR(corvath::math::IncompleteBeta(alpha, beta, x), lower, 1e-11) << alpha;
    EXPECT_NEAR(corvath::math::BetaDensity(alpha, beta, x), density, 1e-10 * density) << alpha;
    EXPECT_NEAR(corvath::math::IncompleteBetaInverse(alpha, beta, lower), x,
                1e-11 / density + 2e-16 * x)
        << alpha;
  }
  EXPECT_NEAR(WithParameters(types::BETA, {0.0, 2.0, 540.0, 540.0})->PDF(2.0 * betas[0].x),
              0.5 * betas[0].density, 1e-12);
  // Poisson: lower tail up to lambda, and the probability of lambda events.
  const std::tuple<double, double, double> counts[] = {
      {1e06, 0.5002659614862837, 0.000398942247156244},
      {1e09, 0.500008410441739, 1.26156626090495e-5},
      {1e12, 0.5000002659615203, 3.989422804013994e-7},
      {1e15, 0.5000000084104417, 1.26156626101008e-8},
  };
  for (const auto& [lambda, lower, probability] : counts) {
    const auto rv = WithParameters(types::POISSON, {lambda});
    EXPECT_NEAR(rv->CDF(lambda), lower, 1e-12) << lambda;
    EXPECT_NEAR(rv->PMF(lambda), probability, 1e-12 * probability) << lambda;
    EXPECT_NEAR(rv->InverseCDF(lower), lambda, 1.0 + 1e-8 * std::sqrt(lambda)) << lambda;
  }
  // As good as normal, far beyond what any fraction or series reaches.
  const auto many = WithParameters(types::POISSON, {1e299});
  EXPECT_NEAR(many->InverseCDF(1.0), 1e299, 1e284);
  const auto wide = WithParameters(types::BETA, {-1e290, -1e16, 1e299, 1e8});
  for (const double p : {0.0, 0.5, 1.0}) {
    EXPECT_LE(wide->InverseCDF(p), -1e16);
    EXPECT_GE(wide->InverseCDF(p), -1e276);
  }
}

TEST(Distributions, BetaNextToItsEndsAndLimits) {
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

TEST(Distributions, ClosedFormsOfTheIterativeFits) {
  const auto weibull = WithStats(types::WEIBULL, {1.0, 1.0});  // the exponential distribution
  EXPECT_NEAR(weibull->GetParameter(L"Shape parameter k"), 1.0, 1e-10);
  EXPECT_NEAR(weibull->GetParameter(L"Scale parameter lambda"), 1.0, 1e-10);
  const auto right_angled = WithStats(types::TRIANGULAR, {0.0, 1.0, 10.0});
  EXPECT_EQ(right_angled->GetParameters()(0), right_angled->GetParameters()(1));
  EXPECT_NEAR(right_angled->GetStats()(2), 0.4 * std::sqrt(2.0), 1e-14);
  const auto plain = WithStats(types::POLYMAP, {1.0, 2.0, 0.5, 0.0});
  EXPECT_EQ(plain->GetParameters(), (VectorXd(5) << 1.0, 2.0, 1.0, 0.0, 0.0).finished());
  EXPECT_NEAR(plain->CDF(3.0), corvath::math::NormalCdf(1.0), 1e-15);
  // u + 0.2 u^3: variance 2.8, fourth moment 87.072 by those of u, and 4 d^4 that stored fits have.
  const auto cubic = WithParameters(types::POLYMAP, {0.0, 1.0, 1.0, 0.0, 0.2});
  EXPECT_NEAR(cubic->GetStats()(3), (87.072 + 0.0064) / (2.8 * 2.8) - 3.0, 1e-12);
  // Both shapes 1 are the uniform distribution on l1 -+ 1 / l2, both (almost) 0 the logistic one.
  const auto uniform = WithParameters(types::LAMBDA, {3.0, 2.0, 1.0, 1.0});
  EXPECT_NEAR(uniform->GetStats()(1), 1.0 / std::sqrt(12.0), 1e-14);
  EXPECT_NEAR(uniform->GetStats()(3), -1.2, 1e-12);
  EXPECT_NEAR(uniform->CDF(3.25), 0.75, 1e-13);
  const auto logistic = WithParameters(types::LAMBDA, {3.0, 1.0, 0.0, 0.0});
  EXPECT_NEAR(logistic->GetStats()(1), M_PI / std::sqrt(3.0), 1e-5);
  EXPECT_NEAR(logistic->GetStats()(3), 1.2, 1e-4);
  EXPECT_NEAR(logistic->CDF(4.0), 1.0 / (1.0 + std::exp(-1.0)), 1e-6);
}

TEST(Distributions, SearchesEndWhereTheirStepsEnd) {
  // All steps lead to the same side: 50, 25, ... of the shape 100, 1/8, 1/16, ... of 1 / alpha = 1/4.
  testing::internal::CaptureStdout();
  const auto weibull = WithStats(types::WEIBULL, {2.0, 2e-6});
  EXPECT_EQ(weibull->GetParameters()(1), 200.0 - 100.0 * std::ldexp(1.0, -39));
  const auto frechet = WithStats(types::FRECHET, {2.0, 2e12});
  EXPECT_EQ(frechet->GetParameters()(1), 1.0 / (0.5 - std::ldexp(1.0, -33)));
  EXPECT_EQ(
      testing::internal::GetCapturedStdout().substr(0, 88),
      "WARNING: RV 'RV' of type 'WEIBULL': The moments (2, 2e-06) are not reached; those of the");
  // The moments are those of the variable then: of Weibull, the coefficient of variation is
  // pi / (sqrt(6) k) but for a second term.
  EXPECT_NEAR(weibull->GetStats()(1) / weibull->GetStats()(0), M_PI / (std::sqrt(6.0) * 200.0),
              3e-5);
  EXPECT_EQ(WithStats(types::WEIBULL, {7.0, 3.0})->GetStats(), Eigen::Vector2d(7.0, 3.0));
}

TEST(Distributions, DiscreteStatesAndSteps) {
  const auto coin = WithParameters(types::BERNOULLI, {0.3});
  const auto events = WithParameters(types::POISSON, {1.0});
  const auto table = WithParameters(types::DISCRETE, {4.0, 2.0, -1.0, 1.0, 7.0, 1.0});
  for (const auto& rv : {coin, events, table}) {
    const Eigen::MatrixXd states = rv->GetStates();
    EXPECT_NEAR(states.col(1).sum(), 1.0, 1e-9) << rv->GetTypeId();
    const double mean = states.col(0).dot(states.col(1));
    EXPECT_NEAR(mean, rv->GetMean(), 1e-8);
    EXPECT_NEAR(std::sqrt((states.col(0).array() - mean).square().matrix().dot(states.col(1))),
                rv->GetStats()(1), 1e-8);
    for (Eigen::Index i = 0; i < states.rows(); ++i) {
      EXPECT_EQ(rv->PMF(states(i, 0)), states(i, 1));
      EXPECT_TRUE(std::isnan(rv->PDF(states(i, 0))));
      EXPECT_EQ(rv->PDF(states(i, 0) + 0.25), 0.0);
    }
  }
  EXPECT_EQ(WithParameters(types::NORMAL, {0.0, 1.0})->GetStates().size(), 0);
  // As many events as no table holds, and more than an integer does.
  EXPECT_EQ(RefusalOf([] { WithParameters(types::POISSON, {1e12})->GetStates(); }).substr(0, 62),
            "RV 'RV' of type 'POISSON': Too many states for a table: 100000");
  EXPECT_THROW(WithParameters(types::POISSON, {1e30})->GetStates(),
               boost::numeric::positive_overflow);
  EXPECT_NEAR(WithParameters(types::POISSON, {1e12})->InverseCDF(0.5), 1e12, 1e3);
}

TEST(Distributions, TablesAreFittedFromSamples) {
  const auto fit = [](int type, const std::vector<double>& data) {
    const auto rv = Make(type);
    rv->Fit(ToVector(data));
    return rv;
  };
  EXPECT_EQ(fit(types::DISCRETE, {1.0, 2.0, 1.0})->GetParameters(),
            Eigen::Vector4d(1.0, 2.0 / 3.0, 2.0, 1.0 / 3.0));
  // 1.001 is as good as 1: a hundredth of the mean gap of 2 / 3 separates states.
  EXPECT_EQ(fit(types::DISCRETE, {1.0, 1.001, 3.0, 1.0})->GetParameters(),
            Eigen::Vector4d(1.0, 0.75, 3.0, 0.25));
  std::vector<double> ten;
  for (int i = 0; i < 10; ++i) ten.push_back(static_cast<double>((7 * i) % 10));
  VectorXd expected(10);  // four classes on [0, 9]: ends 2.25, 4.5, 6.75
  expected << 0.0, 0.0, 2.25, 0.3, 4.5, 0.5, 6.75, 0.7, 9.0, 1.0;
  EXPECT_LT((fit(types::MULTIUNIFORM, ten)->GetParameters() - expected).norm(), 1e-15);
  // The first of three classes on [0.3, 1.2] ends at 0.3 + 1 * 0.9 / 3 = 0.6, where a sample is; with
  // the quotient taken first, just below it.
  const auto thirds = fit(types::MULTIUNIFORM, {0.3, 0.6, 0.7, 1.0, 1.2});
  EXPECT_EQ(thirds->GetParameters()(3), 0.4);

  for (const int type : {types::DISCRETE, types::MULTIUNIFORM}) {
    const auto rv = Make(type);
    const auto before = rv->Clone();
    const auto refusal = [&](const Eigen::MatrixXd& data) {
      const std::string message = RefusalOf([&] { rv->Fit(data); });
      EXPECT_EQ(*rv, *before);
      return message.substr(message.find(": ") + 2);
    };
    EXPECT_EQ(refusal(Eigen::MatrixXd(3, 2)),
              "Wrong number of data columns. Expected: 1, obtained: 2");
    EXPECT_EQ(refusal(Eigen::MatrixXd(1, 1)), "Not enough data points available. ");
    EXPECT_EQ(refusal(Eigen::MatrixXd::Ones(3, 1)),
              type == types::DISCRETE
                  ? "Wrong number of statistical parameters. Expected at least 4, obtained: 2"
                  : "values and probability must be in ascending order ");
    EXPECT_NE(refusal(Eigen::MatrixXd::Constant(3, 1, std::nan(""))), "");
  }
}

TEST(Distributions, ParametersThatMeanNothingAreRefused) {
  for (const VariableLine& line : LinesOf("rejects")) {
    const std::string text = RefusalOf([&] { WithParameters(line.type, line.numbers); });
    EXPECT_EQ(text.find(line.outcome), text.find(": ") + 2) << text;
  }
}

TEST(Distributions, HaveTheValuesOfTheFile) {
  for (const VariableLine& line : LinesOf("has")) {
    const auto rv = WithParameters(line.type, line.numbers);
    std::istringstream words(line.outcome);
    double x, expected;
    for (std::string what; words >> what >> x >> expected;)
      EXPECT_NEAR(what == "pdf"       ? rv->PDF(x)
                  : what == "pmf"     ? rv->PMF(x)
                  : what == "cdf"     ? rv->CDF(x)
                  : what == "inverse" ? rv->InverseCDF(x)
                                      : rv->GetStats()(static_cast<Eigen::Index>(x)),
                  expected, std::min(1e-14, 1e-15 * std::abs(expected)))
          << line.type << ' ' << what << ' ' << x;
    EXPECT_TRUE(words.eof());
  }
}

TEST(Distributions, KernelDensityOfItsSamples) {
  const auto rv = WithParameters(types::KERNEL, {1.0, 3.0});
  // Newton's steps from the mean, the first of which below a hundredth of the standard deviation is
  // the last.
  const auto lower = [](double x) {
    return 0.25 * (std::erfc((1.0 - x) / std::sqrt(2.0)) + std::erfc((3.0 - x) / std::sqrt(2.0)));
  };
  for (const double p : {1e-10, 0.1, 0.6, 0.99}) {
    double x = 2.0;
    double step = 1.0;
    while (std::abs(step) >= 0.01 * std::sqrt(2.0)) {
      step = (lower(x) - p) / rv->PDF(x);
      x -= step;
    }
    EXPECT_NEAR(rv->InverseCDF(p), x, 1e-10) << p;
    EXPECT_NEAR(rv->CDF(x), lower(x), 1e-15);
  }
  // From one crowd to a lonely sample they run away.
  const auto crowd = WithParameters(types::KERNEL, {0.0, 0.0, 0.0, 0.0, 10.0});
  EXPECT_EQ(RefusalOf([&] { crowd->InverseCDF(0.99); }),
            "RV 'RV' of type '39': Iteration does not converge.");
  const auto single = WithParameters(types::KERNEL, {5.0});
  EXPECT_EQ(single->GetStats()(1), 0.0);
  EXPECT_EQ(RefusalOf([&] { single->CDF(5.0); }),
            "RV 'RV' of type '39': The samples have no spread, so there is no kernel density.");
}

}  // namespace
