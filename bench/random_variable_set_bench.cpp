#include "stochastics/nataf_adjustment.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/rv_factory.h"
#include "stochastics/rv_set_nataf.h"
#include "stochastics/special_functions.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

/// Mapping 100,000 standard normal samples of ten correlated variables may take 3 times the special
/// functions that it needs. Ten variables that need the numeric adjustment of all their pairs may
/// take 60 times one pass of the integral over all pairs.
namespace {

using namespace corvath::algorithm;
namespace types = corvath::enums::RandomVariable;

constexpr Eigen::Index kVariables = 10;
constexpr Eigen::Index kSamples = 100000;

Eigen::MatrixXd Correlation(double rho) {
  Eigen::MatrixXd matrix = Eigen::MatrixXd::Constant(kVariables, kVariables, rho);
  matrix.diagonal().setOnes();
  return matrix;
}

RVSet_Nataf MakeSet(const std::vector<int>& ids) {
  RVSet_Nataf set;
  for (Eigen::Index i = 0; i < kVariables; ++i) {
    const auto rv = RVFactory::GetInstance().Create(ids[static_cast<std::size_t>(i) % ids.size()]);
    Eigen::VectorXd moments = rv->GetStats();
    moments.head(2) << 3.0 + 0.1 * static_cast<double>(i), 0.6;
    rv->SetStats(moments);
    set.AddRV(rv);
  }
  return set;
}

Eigen::MatrixXd Samples() {
  std::mt19937 engine(1);
  std::normal_distribution<double> normal;
  Eigen::MatrixXd u(kVariables, kSamples);
  for (double& value : u.reshaped()) value = normal(engine);
  return u;
}

void BM_FromStandardGauss(benchmark::State& state) {
  auto set =
      MakeSet({types::NORMAL, types::LOGNORMAL, types::GUMBEL, types::UNIFORM, types::WEIBULL});
  set.SetCorrelationMatrix(Correlation(0.3));
  const Eigen::MatrixXd u = Samples();
  for (auto _ : state) benchmark::DoNotOptimize(set.FromStandardGauss(u));
}
BENCHMARK(BM_FromStandardGauss)->Unit(benchmark::kMillisecond);

/// Two each of the five types: their functions of the same arguments, nothing else.
void BM_FromStandardGauss_BareFunctions(benchmark::State& state) {
  const Eigen::MatrixXd u = Samples();
  const double shape = 1.0 / 5.8;
  for (auto _ : state) {
    double sum = 0.0;
    for (Eigen::Index sample = 0; sample < kSamples; ++sample) {
      for (Eigen::Index i = 0; i < kVariables; i += 5) {
        sum += std::exp(u(i + 1, sample));
        sum += std::log(-std::log(corvath::math::NormalCdf(u(i + 2, sample))));
        sum += corvath::math::NormalCdf(u(i + 3, sample));
        sum += std::pow(-std::log1p(-corvath::math::NormalCdf(u(i + 4, sample))), shape);
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_FromStandardGauss_BareFunctions)->Unit(benchmark::kMillisecond);

const std::vector<int> kClosedForms = {types::NORMAL, types::LOGNORMAL, types::GUMBEL,
                                       types::UNIFORM, types::WEIBULL};

void BM_ToStandardGauss(benchmark::State& state) {
  auto set = MakeSet(kClosedForms);
  set.SetCorrelationMatrix(Correlation(0.3));
  const Eigen::MatrixXd x = set.FromStandardGauss(Samples());
  for (auto _ : state) benchmark::DoNotOptimize(set.ToStandardGauss(x));
}
BENCHMARK(BM_ToStandardGauss)->Unit(benchmark::kMillisecond);

/// Quantiles by the inverse of the error function, nothing else.
void BM_ToStandardGauss_BareFunctions(benchmark::State& state) {
  auto set = MakeSet(kClosedForms);
  const Eigen::MatrixXd x = set.FromStandardGauss(Samples());
  const auto quantile = [](double p) {
    return -std::sqrt(2.0) * corvath::math::ErfcInverse(2.0 * corvath::math::ClampProbability(p));
  };
  for (auto _ : state) {
    double sum = 0.0;
    for (Eigen::Index sample = 0; sample < kSamples; ++sample) {
      for (Eigen::Index i = 0; i < kVariables; i += 5) {
        sum += std::log(x(i + 1, sample));
        sum += quantile(std::exp(-std::exp(3.0 - x(i + 2, sample))));
        sum += quantile(0.4 * (x(i + 3, sample) - 1.9));
        sum += quantile(-std::expm1(-std::pow(0.3 * x(i + 4, sample), 5.8)));
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_ToStandardGauss_BareFunctions)->Unit(benchmark::kMillisecond);

void BM_Betas_ToStandardGauss(benchmark::State& state) {
  auto set = MakeSet({types::BETA});
  const Eigen::MatrixXd x = set.FromStandardGauss(Samples());
  for (auto _ : state) benchmark::DoNotOptimize(set.ToStandardGauss(x));
}
BENCHMARK(BM_Betas_ToStandardGauss)->Unit(benchmark::kMillisecond);

void BM_Betas_FromStandardGauss(benchmark::State& state) {
  auto set = MakeSet({types::BETA});
  const Eigen::MatrixXd u = Samples();
  for (auto _ : state) benchmark::DoNotOptimize(set.FromStandardGauss(u));
}
BENCHMARK(BM_Betas_FromStandardGauss)->Unit(benchmark::kMillisecond);

/// The distribution function of every value once: what one step of any iteration needs.
void BM_Betas_OneDistributionFunction(benchmark::State& state) {
  auto set = MakeSet({types::BETA});
  const Eigen::MatrixXd x = set.FromStandardGauss(Samples());
  for (auto _ : state) {
    double sum = 0.0;
    for (Eigen::Index sample = 0; sample < kSamples; ++sample)
      for (Eigen::Index i = 0; i < kVariables; ++i)
        sum += set.GetRVs()[static_cast<std::size_t>(i)]->CDF(x(i, sample));
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_Betas_OneDistributionFunction)->Unit(benchmark::kMillisecond);

void BM_NumericAdjustment(benchmark::State& state) {
  auto set = MakeSet(
      {types::BETA, types::WEIBULL, types::LAMBDA, types::TRUNCATEDNORMAL, types::TRIANGULAR});
  const Eigen::MatrixXd matrix = Correlation(0.5);
  for (auto _ : state) set.SetCorrelationMatrix(matrix);
}
BENCHMARK(BM_NumericAdjustment)->Unit(benchmark::kMillisecond);

/// One pass as the integral is written: the density at each of 50 x 50 cells for each pair.
void BM_NumericAdjustment_OnePass(benchmark::State& state) {
  Eigen::VectorXd u(50);
  for (Eigen::Index i = 0; i < 50; ++i) {
    const double t = (static_cast<double>(i) + 0.5) * 0.04 - 1.0;
    u(i) = 1.75 * std::log((1.0 + t) / (1.0 - t));
  }
  for (auto _ : state) {
    double sum = 0.0;
    for (Eigen::Index pair = 0; pair < kVariables * (kVariables - 1) / 2; ++pair)
      for (const double v : u)
        for (const double w : u) sum += BivariateNormalPdf(w, v, 0.5) * w * v;
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_NumericAdjustment_OnePass)->Unit(benchmark::kMillisecond);

}  // namespace
