#include "literature/collected_run.h"
#include "literature/hock_schittkowski.h"
#include "optimizer/dual_active_set.h"
#include "optimizer/qp_solver.h"
#include "slsqp_yardstick.h"

#include <Eigen/Dense>
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

/// A quadratic program of 50 variables and 100 rows may take 5 times the least that any method of
/// its kind does: one Cholesky factorisation of C, and the product of the rows with x for each
/// change of the active set. An iteration of the SQP core, by the published collection.
namespace {

using corvath::algorithm::optimizer::DualActiveSet;
using corvath::algorithm::optimizer::QL;

constexpr int kVariables = 50;
constexpr int kRows = 100;
constexpr double kAccuracy = 1e-11;

struct Program {
  Eigen::MatrixXd c, a;
  Eigen::VectorXd d, b, lower, upper;
};

/// Strictly convex, feasible within its bounds, about half of the variables determined by active
/// constraints.
const Program& RandomProgram() {
  static const Program program = [] {
    std::mt19937 generator(1);
    std::normal_distribution<double> normal;
    const auto draw = [&](double) { return normal(generator); };
    Program p;
    const Eigen::MatrixXd root = Eigen::MatrixXd::Zero(kVariables, kVariables).unaryExpr(draw);
    p.c = root * root.transpose() + Eigen::MatrixXd::Identity(kVariables, kVariables);
    p.d = 10.0 * Eigen::VectorXd::Zero(kVariables).unaryExpr(draw);
    p.a = Eigen::MatrixXd::Zero(kRows, kVariables).unaryExpr(draw);
    const Eigen::VectorXd inside = Eigen::VectorXd::Zero(kVariables).unaryExpr(draw);
    p.b = Eigen::VectorXd::Zero(kRows).unaryExpr(draw).cwiseAbs() - p.a * inside;
    p.lower = inside.array() - 1.0;
    p.upper = inside.array() + 1.0;
    return p;
  }();
  return program;
}

std::size_t WorkSize() {
  return kRows + 3 * kVariables * kVariables / 2 + 10 * kVariables + 1 + kRows;
}

/// Changes of the active set on the way to the solution.
int NumChanges() {
  const Program& p = RandomProgram();
  Eigen::MatrixXd c = p.c;
  Eigen::VectorXd x(kVariables);
  std::vector<double> work(WorkSize());
  std::vector<std::int32_t> active(kVariables);
  DualActiveSet solver({kRows, 0, kRows, kVariables, kVariables, c.data(), p.d.data(), p.a.data(),
                        p.b.data(), p.lower.data(), p.upper.data()},
                       kAccuracy, work.data(), active.data());
  return solver.Solve(true, 40 * (kRows + kVariables), x.data()) == 0 ? solver.NumChanges() : 0;
}

void BM_QuadraticProgram(benchmark::State& state) {
  const Program& p = RandomProgram();
  Eigen::MatrixXd c = p.c;
  Eigen::VectorXd x(kVariables), u(kRows + 2 * kVariables);
  std::vector<double> work(WorkSize());
  std::vector<std::int32_t> active(kVariables);
  std::int32_t ifail = 0;
  for (auto _ : state) {
    QL(kRows, 0, kRows, kVariables, kVariables, kRows + 2 * kVariables, c.data(), p.d.data(),
       p.a.data(), p.b.data(), p.lower.data(), p.upper.data(), x.data(), u.data(), kAccuracy, 1, 1,
       ifail, 0, work.data(), static_cast<std::int32_t>(work.size()), active.data(), kVariables);
    c.diagonal() = p.c.diagonal();  // all that a call overwrites of what it reads
    benchmark::DoNotOptimize(x.data());
  }
  if (ifail != 0) state.SkipWithError("not solved");
  state.counters["changes"] = NumChanges();
}

void BM_CholeskyAndOneProductPerChange(benchmark::State& state) {
  const Program& p = RandomProgram();
  const int num_changes = NumChanges();
  Eigen::LLT<Eigen::MatrixXd> cholesky(kVariables);
  Eigen::VectorXd x = p.lower, residuals(kRows);
  for (auto _ : state) {
    cholesky.compute(p.c);
    benchmark::DoNotOptimize(cholesky.matrixLLT().data());
    for (int k = 0; k < num_changes; ++k) {
      residuals = p.b;
      residuals.noalias() += p.a * x;
      benchmark::DoNotOptimize(residuals.data());
    }
  }
  state.counters["changes"] = num_changes;
}

/// All iterations of the collection, and in the next benchmark the function and gradient calls of
/// the same runs alone: their difference is the core's.
void BM_CollectionSolved(benchmark::State& state) {
  int num_iterations = 0;
  for (auto _ : state) {
    num_iterations = 0;
    for (const auto& problem : literature::HockSchittkowski())
      num_iterations +=
          literature::RunCollected(problem, literature::Gradients::kAnalytic).num_gradients;
  }
  state.counters["per_iteration"] = benchmark::Counter(
      num_iterations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_CollectionCalls(benchmark::State& state) {
  int num_iterations = 0;
  std::vector<int> num_calls;
  for (const auto& problem : literature::HockSchittkowski()) {
    const auto run = literature::RunCollected(problem, literature::Gradients::kAnalytic);
    num_calls.push_back(run.num_functions + run.num_gradients);
    num_iterations += run.num_gradients;
  }
  literature::Dual g[literature::kMaxConstraints + 1];
  for (auto _ : state)
    for (std::size_t k = 0; k < num_calls.size(); ++k)
      for (int call = 0; call < num_calls[k]; ++call) {
        const auto& problem = literature::HockSchittkowski()[k];
        benchmark::DoNotOptimize(literature::EvaluateAt(problem, problem.start.data(), g));
      }
  state.counters["per_iteration"] = benchmark::Counter(
      num_iterations, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

/// The problems that both codes bring to the published optimum: one that fails may take any time.
const std::vector<literature::CollectedProblem>& SolvedByBoth() {
  static const std::vector<literature::CollectedProblem> problems = [] {
    std::vector<literature::CollectedProblem> both;
    for (const auto& problem : literature::HockSchittkowski()) {
      const auto own = literature::RunCollected(problem, literature::Gradients::kAnalytic);
      const auto other = bench::RunYardstick(problem);
      if (literature::MeetsTarget(problem, own.f, own.violation) &&
          literature::MeetsTarget(problem, other.f, other.violation))
        both.push_back(problem);
    }
    return both;
  }();
  return problems;
}

void BM_CollectionBoth(benchmark::State& state) {
  if (!bench::HasYardstick()) return state.SkipWithError("built without NLopt");
  for (auto _ : state)
    for (const auto& problem : SolvedByBoth())
      benchmark::DoNotOptimize(
          literature::RunCollected(problem, literature::Gradients::kAnalytic).f);
  state.counters["problems"] = static_cast<double>(SolvedByBoth().size());
}

void BM_CollectionBoth_Slsqp(benchmark::State& state) {
  if (!bench::HasYardstick()) return state.SkipWithError("built without NLopt");
  for (auto _ : state)
    for (const auto& problem : SolvedByBoth())
      benchmark::DoNotOptimize(bench::RunYardstick(problem).f);
  state.counters["problems"] = static_cast<double>(SolvedByBoth().size());
}

BENCHMARK(BM_QuadraticProgram)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CholeskyAndOneProductPerChange)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CollectionSolved)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CollectionCalls)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CollectionBoth)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_CollectionBoth_Slsqp)->Unit(benchmark::kMicrosecond);

}  // namespace
