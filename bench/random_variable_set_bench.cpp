#include "stochastics/nataf_adjustment.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/rv_factory.h"
#include "stochastics/rv_set_nataf.h"

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
