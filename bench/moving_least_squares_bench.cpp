#include "fit_loops_native.h"
#include "literature/uniform_points.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/kernels/kernels_constant.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"

#include <Eigen/Cholesky>
#include <benchmark/benchmark.h>

#include <cmath>

/// Linear basis, 500 support points, 5 inputs, 10,000 queries. The model may take 1.1 times the
/// hand-written loop for this processor; one product of weights and table for all queries, and the
/// loop that forms one normal matrix after the other, take longer.
namespace {

using namespace corvath::math::metamodel;

constexpr Eigen::Index kPoints = 500;
constexpr Eigen::Index kInputs = 5;
constexpr Eigen::Index kQueries = 10000;
constexpr Eigen::Index kTerms = kInputs + 1;

struct Data {
  Eigen::MatrixXd points = literature::UniformPoints(kPoints, kInputs, 1);
  Eigen::VectorXd values = points.rowwise().sum().array().sin();
  Eigen::MatrixXd queries = literature::UniformPoints(kQueries, kInputs, 2);
  Eigen::VectorXd radius = Eigen::VectorXd::Constant(1, 1.5);
};

const Data& GetData() {
  static const Data data;
  return data;
}

Eigen::MatrixXd LinearBasis(const Eigen::MatrixXd& x) {
  Eigen::MatrixXd basis(x.rows(), kTerms);
  basis << Eigen::VectorXd::Ones(x.rows()), x;
  return basis;
}

void BM_MovingLeastSquares_Approximate(benchmark::State& state) {
  const Data& data = GetData();
  MovingLeastSquaresSettings settings(kInputs);
  settings.SetKernelParameter(data.radius);
  MovingLeastSquares model(data.points, data.values, settings);
  model.Build();
  for (auto _ : state) benchmark::DoNotOptimize(model.Approximate(data.queries));
}

/// Hand-written for this size and this processor.
void BM_MovingLeastSquares_Native(benchmark::State& state) {
  const Data& data = GetData();
  const double factor = std::log(0.001) / (data.radius(0) * data.radius(0));
  Eigen::VectorXd result(kQueries);
  for (auto _ : state) {
    const Eigen::MatrixXd basis = LinearBasis(data.points);
    LocalFitLoop({basis.data(), data.values.data(), kPoints, kTerms}, data.queries.data(), kQueries,
                 factor, result.data());
    benchmark::DoNotOptimize(result.data());
  }
}

/// One table for a block of queries, by Eigen for the baseline of the build.
void BM_MovingLeastSquares_Table(benchmark::State& state) {
  const Data& data = GetData();
  const KernelConstInflIsoExp kernel(data.radius);
  const KernelBlock kernel_block(kernel, data.points);
  constexpr Eigen::Index kBlock = 128;
  for (auto _ : state) {
    const Eigen::MatrixXd basis = LinearBasis(data.points);
    Eigen::MatrixXd table(kPoints, kTerms * (kTerms + 1) / 2 + kTerms);
    Eigen::Index next = 0;
    for (Eigen::Index p = 0; p < kTerms; ++p)
      for (Eigen::Index q = p; q < kTerms; ++q)
        table.col(next++) = basis.col(p).cwiseProduct(basis.col(q));
    for (Eigen::Index p = 0; p < kTerms; ++p)
      table.col(next++) = basis.col(p).cwiseProduct(data.values);
    Eigen::VectorXd result(kQueries);
    Eigen::MatrixXd weights(kPoints, kBlock);
    Eigen::MatrixXd sums(table.cols(), kBlock);
    Eigen::Matrix<double, kTerms, kTerms> normal;
    Eigen::Matrix<double, 1, kTerms> at;
    for (Eigen::Index begin = 0; begin < kQueries; begin += kBlock) {
      const Eigen::Index rows = std::min(kBlock, kQueries - begin);
      kernel_block.Weights(data.queries.middleRows(begin, rows), weights.leftCols(rows));
      sums.leftCols(rows).noalias() = table.transpose() * weights.leftCols(rows);
      for (Eigen::Index i = 0; i < rows; ++i) {
        const double* entry = sums.col(i).data();
        for (Eigen::Index p = 0; p < kTerms; ++p)
          for (Eigen::Index q = p; q < kTerms; ++q) normal(q, p) = *entry++;
        at << 1.0, data.queries.row(begin + i);
        const Eigen::Map<const Eigen::Matrix<double, kTerms, 1>> right(entry);
        result(begin + i) = at * normal.ldlt().solve(right);
      }
    }
    benchmark::DoNotOptimize(result);
  }
}

/// One normal matrix after the other.
void BM_MovingLeastSquares_PointByPoint(benchmark::State& state) {
  const Data& data = GetData();
  const KernelConstInflIsoExp kernel(data.radius);
  for (auto _ : state) {
    const Eigen::MatrixXd basis = LinearBasis(data.points);
    Eigen::VectorXd result(kQueries);
    Eigen::VectorXd weights(kPoints);
    Eigen::MatrixXd weighted(kPoints, kTerms);
    Eigen::RowVectorXd at(kTerms);
    for (Eigen::Index i = 0; i < kQueries; ++i) {
      kernel.Weights(weights, data.queries.row(i).transpose(), data.points);
      weighted = weights.asDiagonal() * basis;
      const Eigen::MatrixXd normal = weighted.transpose() * basis;
      at << 1.0, data.queries.row(i);
      result(i) = at * normal.ldlt().solve(weighted.transpose() * data.values);
    }
    benchmark::DoNotOptimize(result);
  }
}

BENCHMARK(BM_MovingLeastSquares_Native)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MovingLeastSquares_Table)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MovingLeastSquares_Approximate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_MovingLeastSquares_PointByPoint)->Unit(benchmark::kMillisecond);

}  // namespace
