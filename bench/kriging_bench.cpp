#include "kernel_loop_native.h"
#include "literature/uniform_points.h"
#include "metamodel/kriging/kernel_noise_fit.h"
#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/thin_plate_splines.h"

#include <Eigen/Cholesky>
#include <benchmark/benchmark.h>

#include <cmath>

/// Kriging, 1000 support points, 10 inputs, 100,000 queries: isotropic at most 1.25 times the
/// hand-written loop, anisotropic at most 1.4 times. Cross-validation and the steps of a fit beside
/// the factorisations that they may cost.
namespace {

using namespace corvath::math::metamodel;

constexpr Eigen::Index kPoints = 1000;
constexpr Eigen::Index kInputs = 10;
constexpr Eigen::Index kQueries = 100000;

OrdinaryKriging Model(KernelType type, Eigen::Index num_points) {
  OrdinaryKrigingSettings settings(kInputs);
  settings.SetKernelType(type);
  settings.SetKernelParameter(
      Eigen::VectorXd::Constant(type == KernelType::kConstInflExp ? kInputs : 1, 2.0));
  settings.SetNugget(1e-3);
  OrdinaryKriging model(literature::UniformPoints(num_points, kInputs, 1),
                        literature::UniformVector(num_points, 2), settings);
  if (!model.Build()) std::abort();
  return model;
}

void Predict(benchmark::State& state, KernelType type) {
  const OrdinaryKriging model = Model(type, kPoints);
  const Eigen::MatrixXd x = literature::UniformPoints(kQueries, kInputs, 3);
  for (auto _ : state) benchmark::DoNotOptimize(model.Approximate(x).eval());
}
BENCHMARK_CAPTURE(Predict, Isotropic, KernelType::kConstInflIsoExp)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Predict, Anisotropic, KernelType::kConstInflExp)->Unit(benchmark::kMillisecond);

/// The same sums, without transforms: over 992 of the points, a whole number of vectors.
void PlainLoop(benchmark::State& state, bool isotropic) {
  constexpr Eigen::Index kWhole = kPoints / 32 * 32;
  const Eigen::MatrixXd points = literature::UniformPoints(kWhole, kInputs, 1);
  const Eigen::VectorXd values = literature::UniformVector(kWhole, 2);
  const Eigen::MatrixXd x = literature::UniformPoints(kQueries, kInputs, 3);
  const double factor = std::log(0.001) / 4.0;
  const Eigen::VectorXd factors = Eigen::VectorXd::Constant(kInputs, factor);
  Eigen::VectorXd sums(kQueries);
  const KernelLoopData data{points.data(), values.data(), x.data(), kWhole,
                            kQueries,      kInputs,       factor};
  for (auto _ : state) {
    KernelLoop(data, isotropic ? nullptr : factors.data(), sums.data());
    benchmark::DoNotOptimize(sums.data());
  }
}
BENCHMARK_CAPTURE(PlainLoop, Isotropic, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PlainLoop, Anisotropic, false)->Unit(benchmark::kMillisecond);

constexpr Eigen::Index kValidated = 500;

/// At most twice one factorisation plus one inverse.
void LeaveOneOut(benchmark::State& state) {
  const OrdinaryKriging model = Model(KernelType::kConstInflIsoExp, kValidated);
  for (auto _ : state) benchmark::DoNotOptimize(model.ApproximateLeaveOneOut().eval());
}
BENCHMARK(LeaveOneOut)->Unit(benchmark::kMillisecond);

/// At most 4 factorisations.
void TenGroups(benchmark::State& state) {
  const OrdinaryKriging model = Model(KernelType::kConstInflIsoExp, kValidated);
  IndexVector groups(kValidated);
  for (Eigen::Index i = 0; i < kValidated; ++i) groups(i) = static_cast<std::uint64_t>(i % 10);
  for (auto _ : state) benchmark::DoNotOptimize(model.ApproximateCrossValidation(groups).eval());
}
BENCHMARK(TenGroups)->Unit(benchmark::kMillisecond);

OrdinaryKriging FiveInputs(KernelType type) {
  const Eigen::MatrixXd points = literature::UniformPoints(kValidated, 5, 1);
  const Eigen::VectorXd values = (3.0 * points.rowwise().sum().array()).sin();
  OrdinaryKrigingSettings settings(5);
  settings.SetKernelType(type);
  if (type == KernelType::kConstInflExp)
    settings.SetKernelParameter(Eigen::VectorXd::Constant(5, 2.0));
  return OrdinaryKriging(points, values, settings);
}

/// All of a fit: per trial at most 0.65 of a factorisation by Eigen for the baseline of the build,
/// anisotropic 1.5, since gradients are among them. A trial passes the interruption point once.
void Fit(benchmark::State& state, KernelType type) {
  OrdinaryKriging model = FiveInputs(type);
  int trials = 0;
  model.SetInterruptionPoint([&] { ++trials; });
  for (auto _ : state) {
    trials = 0;
    if (!model.BuildOptimal()) std::abort();
  }
  state.counters["trials"] = trials;
  state.counters["likelihood"] = model.GetLikelihood();
}
BENCHMARK_CAPTURE(Fit, Isotropic, KernelType::kConstInflIsoExp)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Fit, Anisotropic, KernelType::kConstInflExp)->Unit(benchmark::kMillisecond);

/// Radii and noise together: values and gradients for some twenty trials.
void FitWithNoise(benchmark::State& state, bool is_anisotropic) {
  const OrdinaryKriging model = FiveInputs(KernelType::kConstInflIsoExp);
  const Eigen::VectorXd values =
      model.GetValues() + 0.1 * literature::UniformVector(model.GetValues().size(), 4);
  for (auto _ : state)
    benchmark::DoNotOptimize(FitKernelWithNoise(model.GetPoints(), values, is_anisotropic, {}));
}
BENCHMARK_CAPTURE(FitWithNoise, Isotropic, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FitWithNoise, Anisotropic, true)->Unit(benchmark::kMillisecond);

/// At most 5 factorisations.
void AnisotropicGradient(benchmark::State& state) {
  OrdinaryKriging model = FiveInputs(KernelType::kConstInflExp);
  if (!model.Build()) std::abort();
  for (auto _ : state) benchmark::DoNotOptimize(model.LikelihoodGradient().eval());
}
BENCHMARK(AnisotropicGradient)->Unit(benchmark::kMillisecond);

Eigen::MatrixXd Definite() {
  const Eigen::MatrixXd half = Eigen::MatrixXd::Random(kValidated, kValidated);
  return half * half.transpose() + Eigen::MatrixXd::Identity(kValidated, kValidated);
}

/// The factorisation by which a build decides.
void FactoriseLDLT(benchmark::State& state) {
  const Eigen::MatrixXd matrix = Definite();
  for (auto _ : state) benchmark::DoNotOptimize(matrix.ldlt());
}
BENCHMARK(FactoriseLDLT)->Unit(benchmark::kMillisecond);

/// The fastest factorisation at hand.
void FactoriseLLT(benchmark::State& state) {
  const Eigen::MatrixXd matrix = Definite();
  for (auto _ : state) benchmark::DoNotOptimize(matrix.llt());
}
BENCHMARK(FactoriseLLT)->Unit(benchmark::kMillisecond);

void InverseLLT(benchmark::State& state) {
  const Eigen::MatrixXd matrix = Definite();
  const Eigen::LLT<Eigen::MatrixXd> llt(matrix);
  for (auto _ : state)
    benchmark::DoNotOptimize(llt.solve(Eigen::MatrixXd::Identity(kValidated, kValidated)).eval());
}
BENCHMARK(InverseLLT)->Unit(benchmark::kMillisecond);

void ThinPlates(benchmark::State& state) {
  SurrogateTPS model(literature::UniformPoints(200, 5, 1), literature::UniformVector(200, 2));
  model.Build();
  const Eigen::MatrixXd x = literature::UniformPoints(10000, 5, 3);
  for (auto _ : state) benchmark::DoNotOptimize(model.Approximate(x).eval());
}
BENCHMARK(ThinPlates)->Unit(benchmark::kMillisecond);

}  // namespace
