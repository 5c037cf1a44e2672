#include "fit_loops_native.h"
#include "literature/uniform_points.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"

#include <Eigen/Cholesky>
#include <benchmark/benchmark.h>

#include <algorithm>

/// A full quadratic of 10 inputs. Prediction of 10^6 designs may take 1.5 times the plain loop; the
/// fit to 1000 designs 0.8 times the hand-written one, and it scales the inputs besides.
namespace {

using corvath::math::metamodel::LinearRegression;
using corvath::math::metamodel::LinearRegressionSettings;

constexpr Eigen::Index kDesigns = 1000000;
constexpr Eigen::Index kInputs = 10;

const Eigen::MatrixXd& Designs() {
  static const Eigen::MatrixXd designs = literature::UniformPoints(kDesigns, kInputs, 1);
  return designs;
}

LinearRegression Model() {
  LinearRegressionSettings settings(kInputs);
  settings.SetOrder(2);
  LinearRegression model(literature::UniformPoints(200, kInputs, 2),
                         literature::UniformVector(200, 3), settings);
  model.Build();
  return model;
}

void BM_LinearRegression_Approximate(benchmark::State& state) {
  const LinearRegression model = Model();
  const Eigen::MatrixXd& designs = Designs();
  for (auto _ : state) benchmark::DoNotOptimize(model.Approximate(designs).eval());
  state.SetItemsProcessed(state.iterations() * kDesigns);
}

/// Scales a block of rows, then adds one term after the other to all of its sums.
Eigen::VectorXd PlainLoop(const Eigen::MatrixXd& x, const Eigen::VectorXd& scale,
                          const Eigen::VectorXd& offset, const Eigen::VectorXd& coefficients) {
  constexpr Eigen::Index kBlock = 256;
  Eigen::VectorXd result(x.rows());
  double scaled[kInputs][kBlock];
  for (Eigen::Index begin = 0; begin < x.rows(); begin += kBlock) {
    const Eigen::Index rows = std::min(kBlock, x.rows() - begin);
    for (Eigen::Index j = 0; j < kInputs; ++j) {
      const double* column = x.data() + j * x.rows() + begin;
      for (Eigen::Index i = 0; i < rows; ++i) scaled[j][i] = column[i] * scale(j) + offset(j);
    }
    double* sum = result.data() + begin;
    const double* c = coefficients.data();
    for (Eigen::Index i = 0; i < rows; ++i) sum[i] = *c;
    ++c;
    for (Eigen::Index j = 0; j < kInputs; ++j, ++c)
      for (Eigen::Index i = 0; i < rows; ++i) sum[i] += *c * scaled[j][i];
    for (Eigen::Index j = 0; j < kInputs; ++j, ++c)
      for (Eigen::Index i = 0; i < rows; ++i) sum[i] += *c * scaled[j][i] * scaled[j][i];
    for (Eigen::Index j = 0; j < kInputs; ++j)
      for (Eigen::Index k = j + 1; k < kInputs; ++k, ++c)
        for (Eigen::Index i = 0; i < rows; ++i) sum[i] += *c * scaled[j][i] * scaled[k][i];
  }
  return result;
}

void BM_LinearRegression_PlainLoop(benchmark::State& state) {
  const LinearRegression model = Model();
  const Eigen::MatrixXd& designs = Designs();
  const Eigen::VectorXd scale = Eigen::VectorXd::Constant(kInputs, 1.01);
  const Eigen::VectorXd offset = Eigen::VectorXd::Constant(kInputs, -0.01);
  for (auto _ : state)
    benchmark::DoNotOptimize(PlainLoop(designs, scale, offset, model.GetCoefficients()).eval());
  state.SetItemsProcessed(state.iterations() * kDesigns);
}

constexpr Eigen::Index kFitted = 1000;

LinearRegressionSettings Quadratic() {
  LinearRegressionSettings settings(kInputs);
  settings.SetOrder(2);
  return settings;
}

void BM_LinearRegression_Fit(benchmark::State& state) {
  const Eigen::MatrixXd points = literature::UniformPoints(kFitted, kInputs, 2);
  const Eigen::VectorXd values = literature::UniformVector(kFitted, 3);
  const LinearRegressionSettings settings = Quadratic();
  for (auto _ : state) {
    LinearRegression model(points, values, settings);
    if (!model.Build()) std::abort();
    benchmark::DoNotOptimize(model.GetCoefficients().data());
  }
}

/// The same design matrix, with normal equations and their solution by `solve`.
template <class Solve>
void Fit(benchmark::State& state, const Solve& solve) {
  using corvath::math::metamodel::BuildRegressionMatrix;
  const Eigen::MatrixXd points = literature::UniformPoints(kFitted, kInputs, 2);
  const Eigen::VectorXd values = literature::UniformVector(kFitted, 3);
  const LinearRegressionSettings settings = Quadratic();
  Eigen::VectorXd coefficients;
  for (auto _ : state) {
    const Eigen::MatrixXd design = BuildRegressionMatrix(points, settings.GetMainTermSelection(),
                                                         settings.GetInteractionSelection());
    coefficients.resize(design.cols());
    solve(design, values, coefficients);
    benchmark::DoNotOptimize(coefficients.data());
  }
}

void BM_LinearRegression_FitNative(benchmark::State& state) {
  Fit(state, [](const Eigen::MatrixXd& design, const Eigen::VectorXd& values,
                Eigen::VectorXd& coefficients) {
    LeastSquaresLoop({design.data(), values.data(), design.rows(), design.cols()},
                     coefficients.data());
  });
}

/// For the baseline of the build.
void BM_LinearRegression_FitEigen(benchmark::State& state) {
  Fit(state, [](const Eigen::MatrixXd& design, const Eigen::VectorXd& values,
                Eigen::VectorXd& coefficients) {
    Eigen::MatrixXd normal = Eigen::MatrixXd::Zero(design.cols(), design.cols());
    normal.selfadjointView<Eigen::Lower>().rankUpdate(design.transpose());
    coefficients = normal.ldlt().solve(design.transpose() * values);
  });
}

BENCHMARK(BM_LinearRegression_FitNative)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LinearRegression_FitEigen)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LinearRegression_Fit)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LinearRegression_PlainLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearRegression_Approximate)->Unit(benchmark::kMillisecond);

}  // namespace
