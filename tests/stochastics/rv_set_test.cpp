#include "stochastics/marginal_transform.h"
#include "stochastics/nataf_adjustment.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/rv_set_nataf.h"
#include "stochastics/sample_statistics.h"
#include "stochastics/variables.h"
#include "support/testing.h"

#include <boost/math/quadrature/gauss_kronrod.hpp>

namespace {

using namespace corvath::algorithm;
using namespace support;
namespace types = corvath::enums::RandomVariable;
using Eigen::MatrixXd, Eigen::VectorXd;

RVSet_Nataf SetOf(const std::vector<boost::shared_ptr<RV>>& variables) {
  RVSet_Nataf set;
  for (const auto& variable : variables) set.AddRV(variable);
  return set;
}

MatrixXd PairMatrix(double rho) {
  return MatrixXd{{1.0, rho}, {rho, 1.0}};
}

MatrixXd StandardNormalSamples(Eigen::Index n, Eigen::Index m, unsigned seed) {
  std::mt19937 engine(seed);
  std::normal_distribution<double> normal;
  MatrixXd result(n, m);
  for (double& value : result.reshaped()) value = normal(engine);
  return result;
}

/// Correlation of the physical variables for the standard normal correlation rho, by adaptive
/// quadrature of E[x1 x2] over independent u and v with u2 = rho u + sqrt(1 - rho^2) v.
double PhysicalCorrelation(const RV& first, const RV& second, double rho) {
  using Quadrature = boost::math::quadrature::gauss_kronrod<double, 61>;
  const auto standardised = [](const RV& rv, double u) {
    return (MarginalFromGauss(rv, u) - rv.GetStats()(0)) / rv.GetStats()(1);
  };
  const double rest = std::sqrt(1.0 - rho * rho);
  const auto inner = [&](double u) {
    return Quadrature::integrate(
        [&](double v) {
          return standardised(second, rho * u + rest * v) * corvath::math::NormalPdf(v);
        },
        -9.0, 9.0, 4, 1e-10);
  };
  return Quadrature::integrate(
      [&](double u) { return standardised(first, u) * inner(u) * corvath::math::NormalPdf(u); },
      -9.0, 9.0, 4, 1e-10);
}

double Adjusted(int first, int second, double rho, double variation = 0.3) {
  auto set =
      SetOf({WithStats(first, {2.0, 2.0 * variation}), WithStats(second, {5.0, 5.0 * variation})});
  set.SetCorrelationMatrix(PairMatrix(rho));
  return set.GetStandardCorrelationMatrix()(0, 1);
}

TEST(NatafModel, ClosedFormsGiveTheRequestedCorrelation) {
  // The exact ones to quadrature accuracy, the polynomial fits to the errors that are known of
  // them.
  const int simple[] = {types::NORMAL, types::LOGNORMAL, types::UNIFORM, types::EXPONENTIAL,
                        types::GUMBEL};
  for (const int first : simple) {
    for (const int second : simple) {
      const bool exact = first <= types::LOGNORMAL && second <= types::LOGNORMAL &&
                         first != types::UNIFORM && second != types::UNIFORM;
      const bool widest =
          std::minmax(first, second) == std::minmax<int>(types::UNIFORM, types::EXPONENTIAL);
      const double error = exact ? 1e-6 : widest ? 0.02 : 0.005;
      for (const double rho : {0.1, 0.6, -0.3}) {
        if ((first == types::LOGNORMAL) != (second == types::LOGNORMAL) && !exact) continue;
        const double adjusted = Adjusted(first, second, rho);
        EXPECT_NEAR(PhysicalCorrelation(*WithStats(first, {2.0, 0.6}),
                                        *WithStats(second, {5.0, 1.5}), adjusted),
                    rho, error * std::abs(rho))
            << first << " " << second;
      }
    }
  }
  EXPECT_NEAR(Adjusted(types::UNIFORM, types::UNIFORM, 0.5), 0.5 * (1.04706351 - 0.0471729 * 0.25),
              1e-14);
  EXPECT_NEAR(Adjusted(types::GUMBEL, types::EXPONENTIAL, -0.4),
              -0.4 * (1.14182991 + 0.15003895 * 0.4 + 0.03303221 * 0.16 - 0.0073382 * 0.064),
              1e-14);
}

TEST(NatafModel, NumericAdjustmentGivesTheRequestedCorrelation) {
  // The mid-point rule of 50 x 50 cells is good to a few digits beyond the smooth middle.
  const std::pair<int, int> pairs[] = {
      {types::BETA, types::NORMAL},         {types::BETA, types::BETA},
      {types::WEIBULL, types::LOGNORMAL},   {types::FRECHET, types::GUMBEL},
      {types::LOGUNIFORM, types::UNIFORM},  {types::LOGNORMAL, types::EXPONENTIAL},
      {types::LAMBDA, types::WEIBULL},      {types::TRIANGULAR, types::NORMAL},
      {types::POLYMAP, types::LOGUNIFORM},  {types::MULTIUNIFORM, types::FRECHET},
      {types::TRUNCATEDNORMAL, types::BETA}};
  for (const auto& [first, second] : pairs) {
    for (const double rho : {0.3, -0.5}) {
      const double adjusted = Adjusted(first, second, rho);
      auto swapped = SetOf({WithStats(second, {5.0, 1.5}), WithStats(first, {2.0, 0.6})});
      swapped.SetCorrelationMatrix(PairMatrix(rho));
      EXPECT_NEAR(adjusted, swapped.GetStandardCorrelationMatrix()(0, 1), 1e-12);
      EXPECT_NEAR(PhysicalCorrelation(*WithStats(first, {2.0, 0.6}), *WithStats(second, {5.0, 1.5}),
                                      adjusted),
                  rho, 3e-4)
          << first << " " << second;
    }
  }
}

TEST(NatafModel, NegligibleCorrelationsPassAndDiscreteOnesFail) {
  for (const int discrete : {types::BERNOULLI, types::DISCRETE, types::POISSON}) {
    auto set = SetOf({Make(discrete), WithStats(types::NORMAL, {0.0, 1.0})});
    set.SetCorrelationMatrix(PairMatrix(0.00005));
    EXPECT_NEAR(set.GetStandardCorrelationMatrix()(0, 1), 0.00005, 1e-15);
    EXPECT_EQ(RefusalOf([&] { set.SetCorrelationMatrix(PairMatrix(0.2)); }),
              "Can not set correlation matrix for Nataf model: At least one random variable is not "
              "continuous (e.g. Bernoulli distribution).");
    EXPECT_EQ(set.GetCorrelationMatrix(), PairMatrix(0.00005));
  }
  const std::string message =
      RefusalOf([] { Adjusted(types::FRECHET, types::FRECHET, -0.95, 2.0); });
  EXPECT_NE(message, "<no exception>");  // not to be had with two long tails to the right
}

TEST(NatafModel, DiscreteStatesGoToTheMiddleOfTheirStep) {
  const auto coin = Make(types::BERNOULLI);
  coin->SetParameter(L"Success probability", 0.3);
  const auto quantile = [](double p) { return corvath::math::NormalQuantile(p); };
  EXPECT_NEAR(MarginalToGauss(*coin, 1.0), quantile(0.85), 1e-15);
  EXPECT_NEAR(MarginalToGauss(*coin, 0.4), quantile(0.35), 1e-15);
  const auto table = Make(types::DISCRETE);
  table->SetParameters((VectorXd(6) << 0.0, 0.2, 1.0, 0.5, 3.0, 0.3).finished());
  EXPECT_NEAR(MarginalToGauss(*table, 0.9), quantile(0.45), 1e-15);
  EXPECT_NEAR(MarginalToGauss(*table, -5.0), quantile(0.1), 1e-15);
  EXPECT_NEAR(MarginalToGauss(*table, 2.1), quantile(0.85), 1e-15);
  EXPECT_NEAR(MarginalToGauss(*table, 2.0), quantile(0.45), 1e-15);  // between two: the lower one
  EXPECT_NEAR(MarginalToGauss(*coin, 0.5), quantile(0.85), 1e-15);
  for (const auto& rv : {coin, table})
    for (Eigen::Index i = 0; i < rv->GetStates().rows(); ++i) {
      const double state = rv->GetStates()(i, 0);
      EXPECT_EQ(MarginalFromGauss(*rv, MarginalToGauss(*rv, state)), state);
    }
  EXPECT_EQ(MarginalFromGauss(*coin, -HUGE_VAL), 0.0);
  EXPECT_EQ(MarginalFromGauss(*coin, HUGE_VAL), 1.0);
}

TEST(NatafModel, SampledCorrelationIsTheRequestedOne) {
  auto set = SetOf({WithStats(types::NORMAL, {1.0, 0.2}), WithStats(types::LOGNORMAL, {3.0, 1.0}),
                    WithStats(types::GUMBEL, {2.0, 0.5}), WithStats(types::BETA, {4.0, 1.0})});
  const MatrixXd target{
      {1.0, 0.5, -0.3, 0.2}, {0.5, 1.0, 0.1, 0.0}, {-0.3, 0.1, 1.0, 0.6}, {0.2, 0.0, 0.6, 1.0}};
  set.SetCorrelationMatrix(target);
  const Eigen::Index samples = 100000;
  const MatrixXd x = set.FromStandardGauss(StandardNormalSamples(4, samples, 7));
  const MatrixXd sampled = corvath::math::statistics::CorrelationMatrix(x.transpose());
  // Standard error below 2 / sqrt(samples) for these tails; four of them, and the fits' error.
  EXPECT_LT((sampled - target).cwiseAbs().maxCoeff(),
            4.0 * 2.0 / std::sqrt(double(samples)) + 5e-3);
  for (Eigen::Index i = 0; i < 4; ++i)
    EXPECT_NEAR(x.row(i).mean(), set.GetRVs()[static_cast<std::size_t>(i)]->GetMean(), 0.02);
  EXPECT_EQ(set.GetCorrelationMatrix(), target);
}

TEST(NatafModel, TransformsAreInverseAndTheRootIsOne) {
  auto set = SetOf({WithStats(types::NORMAL, {1.0, 0.2}), WithStats(types::LOGNORMAL, {3.0, 1.0}),
                    WithStats(types::UNIFORM, {2.0, 0.5})});
  const MatrixXd target{{1.0, 0.5, -0.3}, {0.5, 1.0, 0.4}, {-0.3, 0.4, 1.0}};
  set.SetCorrelationMatrix(target);
  const MatrixXd u = 0.9 * StandardNormalSamples(3, 50, 3);
  EXPECT_LT((set.ToStandardGauss(set.FromStandardGauss(u)) - u).cwiseAbs().maxCoeff(), 1e-8);
  const MatrixXd adjusted = set.GetStandardCorrelationMatrix();
  EXPECT_LT((adjusted.diagonal() - VectorXd::Ones(3)).cwiseAbs().maxCoeff(), 1e-14);
  // Correlating twice is the same as the whole matrix once: the root is symmetric.
  EXPECT_LT((set.CorrelateStandardGauss(set.CorrelateStandardGauss(u)) - adjusted * u)
                .cwiseAbs()
                .maxCoeff(),
            1e-13);
  EXPECT_NEAR(adjusted(0, 2), -0.3 * 1.0233267, 1e-14);

  const auto copy = set.Clone();
  EXPECT_EQ(copy->FromStandardGauss(u), set.FromStandardGauss(u));
  copy->GetRVs()[0]->SetStat(L"Mean value", 9.0);
  EXPECT_EQ(set.GetRVs()[0]->GetMean(), 1.0);
}

TEST(NatafModel, DensityMatchesTheBivariateNormalFormula) {
  auto set = SetOf({WithStats(types::NORMAL, {1.0, 2.0}), WithStats(types::NORMAL, {-1.0, 0.5})});
  set.SetCorrelationMatrix(PairMatrix(0.7));
  const VectorXd x = Eigen::Vector2d(2.5, -1.2);
  const double z1 = 0.75, z2 = -0.4, rho = 0.7;
  const double q = (z1 * z1 - 2 * rho * z1 * z2 + z2 * z2) / (1 - rho * rho);
  const double expected = std::exp(-q / 2) / (2 * M_PI * std::sqrt(1 - rho * rho)) / (2.0 * 0.5);
  EXPECT_NEAR(set.PDF(x), expected, 1e-14);
  EXPECT_NEAR(set.JointNormalDensity(Eigen::Vector2d(z1, z2)), expected, 1e-14);
  EXPECT_NEAR(BivariateNormalPdf(z1, z2, rho), expected, 1e-14);

  set.SetCorrelationMatrix(MatrixXd::Identity(2, 2));
  EXPECT_NEAR(set.PDF(x), set.GetRVs()[0]->PDF(2.5) * set.GetRVs()[1]->PDF(-1.2), 1e-15);
  EXPECT_NEAR(set.CDF(x), set.GetRVs()[0]->CDF(2.5) * set.GetRVs()[1]->CDF(-1.2), 1e-15);
  EXPECT_ERROR(std::domain_error, "_rho (1.5) is outside of its domain",
               BivariateNormalPdf(0, 0, 1.5));
}

TEST(NatafModel, WithoutAMatrixItIsIndependentAndSaysSo) {
  const auto set =
      SetOf({WithStats(types::NORMAL, {0.0, 1.0}), WithStats(types::UNIFORM, {0.0, 1.0})});
  testing::internal::CaptureStdout();
  EXPECT_NEAR(set.PDF(Eigen::Vector2d(0.5, 0.5)),
              set.GetRVs()[0]->PDF(0.5) * set.GetRVs()[1]->PDF(0.5), 1e-15);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "WARNING: You missed defining/updating the correlation matrix for the Nataf model. "
            "Assuming an independent set definition for the returned PDF value.\n");
  RVSet_Independent independent;
  for (const auto& rv : set.GetRVs()) independent.AddRV(rv);
  const MatrixXd u = StandardNormalSamples(2, 10, 1);
  EXPECT_EQ(set.FromStandardGauss(u), independent.FromStandardGauss(u));
  EXPECT_EQ(set.ToStandardGauss(u), independent.ToStandardGauss(u));
  EXPECT_EQ(independent.GetCorrelationMatrix(), MatrixXd::Identity(2, 2));
  EXPECT_EQ(independent.CorrelateStandardGauss(u), u);
  EXPECT_NE(independent.Clone()->GetRVs()[0], independent.GetRVs()[0]);
}

TEST(RVSet, RefusalsNameTheProblemAndChangeNothing) {
  const auto exponential = WithStats(types::EXPONENTIAL, {1.0, 1.0});
  auto set = SetOf({exponential, exponential->Clone()});
  set.SetCorrelationMatrix(PairMatrix(0.3));
  MatrixXd skew = PairMatrix(0.1);
  skew(0, 1) = 0.2;
  const std::string invalid = "invalid correlation matrix used.";
  const std::pair<MatrixXd, std::string> matrices[] = {
      {MatrixXd(2, 3), "Correlation matrix must be square, obtained a 2 x 3 matrix."},
      {MatrixXd::Identity(3, 3),
       "Dimensions of correlation matrix (=3) must match number of random "
       "variables (=2)"},
      {skew, invalid},
      {PairMatrix(1.1), invalid},
      {PairMatrix(std::nan("")), invalid},
      {2.0 * PairMatrix(0.1), invalid},
      {PairMatrix(-0.99), "Correlations can not be calculated in standard normal space."},
  };
  const std::string start = "Can not set correlation matrix for Nataf model: ";
  for (const auto& [matrix, text] : matrices)
    EXPECT_EQ(RefusalOf([&, &m = matrix] { set.SetCorrelationMatrix(m); }), start + text);
  EXPECT_EQ(set.GetCorrelationMatrix(), PairMatrix(0.3));
  EXPECT_NEAR(set.GetStandardCorrelationMatrix()(0, 1),
              0.3 * (1.2210871 - 0.3371724 * 0.3 + 0.20027882 * 0.09 - 0.0882202 * 0.027), 1e-14);

  const auto normal = WithStats(types::NORMAL, {0.0, 1.0});
  set = SetOf({normal, normal, normal});
  MatrixXd indefinite{{1.0, 0.99, 0.99}, {0.99, 1.0, -0.99}, {0.99, -0.99, 1.0}};
  for (const MatrixXd& matrix : {indefinite, MatrixXd(MatrixXd::Ones(3, 3))})
    EXPECT_EQ(RefusalOf([&] { set.SetCorrelationMatrix(matrix); }),
              start + "Correlation matrix is not positive definite.");
  RVSet_Independent independent;
  independent.AddRV(normal);
  const VectorXd two = VectorXd::Zero(2);
  const MatrixXd five(2, 5);
  ExpectRefusals<corvath::utils::runtime_error>({
      {[&] { independent.SetCorrelationMatrix(MatrixXd::Identity(1, 1)); }, "Cannot specify corr"},
      {[&] { independent.PDF(two); }, "PDF: Vector size of input variables (=2) must match the nu"},
      {[&] { independent.CDF(two); }, "CDF: Vector size of input variables (=2) must match the nu"},
      {[&] { set.PDF(two); },
       "joint PDF by Nataf model: Vector size of input design (=2) must mat"},
      {[&] { set.CDF(two); },
       "joint CDF by Nataf model: Vector size of input design (=2) must mat"},
      {[&] { set.JointNormalDensity(two); }, "Obtained a vector of size '2', expected a vector of"},
      {[&] { set.ToStandardGauss(five); }, "ToStandardGauss: Matrix rows must match number of"},
      {[&] { set.FromStandardGauss(five); },
       "Got a rows x cols: 2 x 5 matrix. But the rows of the"},
      {[&] { RVSetFactory::GetInstance().Create(2); }, "Asking for RVset type with ident '2' that"},
  });
  EXPECT_EQ(RVSetFactory::GetInstance().Create(1)->GetIdent(), L"Nataf set");
  EXPECT_EQ(RVSetFactory::GetInstance().Create(0)->GetIdent(), L"Independent set");
}

}  // namespace
