// Sampling: the Sobol sequence, a sample of it beside what its memory costs alone, and the exchange of a
// space-filling sample beside the bare arithmetic of its updates.

#include "doe/doe.h"
#include "doe/random_draws.h"
#include "doe/sobol.h"
#include "doe/space_filling.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

namespace {

using namespace corvath::math;
using Eigen::Index;
using Eigen::MatrixXd;

constexpr std::size_t kSobolPoints = 1000000;
constexpr std::size_t kSobolDimensions = 40;

void CountCoordinates(benchmark::State& state) {
  state.SetItemsProcessed(static_cast<std::int64_t>(kSobolPoints * kSobolDimensions) *
                          static_cast<std::int64_t>(state.iterations()));
}

/// The points of the sequence one after the other. Promise: 2e8 coordinates a second.
void SobolSequence(benchmark::State& state) {
  std::vector<double> point(kSobolDimensions);
  for (auto _ : state)
    for (std::size_t i = 1; i <= kSobolPoints; ++i) {
      SobolCoordinates(i, kSobolDimensions, point.data());
      benchmark::DoNotOptimize(point.data());
      benchmark::ClobberMemory();
    }
  CountCoordinates(state);
}

/// All of them held by a DOE, freed again afterwards.
void SobolSample(benchmark::State& state) {
  for (auto _ : state) {
    DOE sample(kSobolDimensions, 1);
    sample.Build(kSobolSequence, kSobolPoints, false);
    benchmark::DoNotOptimize(sample.GetDesigns().data());
  }
  CountCoordinates(state);
}

/// The limit of SobolSample: vectors of these sizes, filled with a constant.
void PointsAlone(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::vector<double>> designs;
    designs.reserve(kSobolPoints);
    for (std::size_t i = 0; i < kSobolPoints; ++i) designs.emplace_back(kSobolDimensions, 0.5);
    benchmark::DoNotOptimize(designs.data());
  }
  CountCoordinates(state);
}

constexpr Index kPoints = 1000;
constexpr Index kDimensions = 20;
constexpr int kPasses = 12;  // as many as a sample of this size gets

MatrixXd Start() {
  Engine engine(1);
  return MatrixXd::NullaryExpr(kPoints, kDimensions,
                               [&engine] { return DrawUniform(engine, -1.0, 1.0); });
}

void SpaceFillingExchange(benchmark::State& state) {
  const MatrixXd start = Start();
  for (auto _ : state) {
    MatrixXd points = LowerDiscrepancy(Engine(1), start, kPasses);
    benchmark::DoNotOptimize(points.data());
  }
}

/// The change of the pairs of two points for as many exchanges, as plain loops over prepared
/// numbers: no draws, no choice, no exchange made. Promise: the loop takes at most twice as long.
void BareUpdates(benchmark::State& state) {
  const MatrixXd z = 0.5 * Start();
  const MatrixXd pairs = MatrixXd::Constant(kPoints, kPoints, 1e-6);
  for (auto _ : state) {
    double sum = 0.0;
    for (int i = 0; i < kPasses * 100 * 50; ++i) {
      const Index a = (i * 7) % kPoints;
      const Index b = (i * 11 + 1) % kPoints;
      const double* const x = z.col(i % kDimensions).data();
      const double* const pa = pairs.col(a).data();
      const double* const pb = pairs.col(b).data();
      const double xa = x[a];
      const double xb = x[b];
      for (Index j = 0; j < kPoints; ++j) {
        const double base = 1.0 + 0.5 * std::abs(x[j]);
        const double fa = base + 0.5 * std::abs(xa) - 0.5 * std::abs(x[j] - xa);
        const double fb = base + 0.5 * std::abs(xb) - 0.5 * std::abs(x[j] - xb);
        const double ratio = fb / fa;
        sum += pa[j] * ratio - pa[j] + pb[j] / ratio - pb[j];
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}

BENCHMARK(SobolSequence)->Unit(benchmark::kMillisecond);
BENCHMARK(SobolSample)->Unit(benchmark::kMillisecond);
BENCHMARK(PointsAlone)->Unit(benchmark::kMillisecond);
BENCHMARK(SpaceFillingExchange)->Unit(benchmark::kMillisecond);
BENCHMARK(BareUpdates)->Unit(benchmark::kMillisecond);

}  // namespace
