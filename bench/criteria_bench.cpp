// Criteria of 100,000 designs, parsing and set-up included.
//
//   SolveWithCriteria   a solve with one criterion of ten operators, four names and two functions
//   SolveAlone          the same solve without it: the difference is the criterion's cost
//   PerDesign           their time for each design: at most 4 microseconds apart
//   SolveWithMacros     a solve with one criterion that calls a macro of three stages
//   SolveExpanded       the same with the text that the macro stands for: within 2 times
//   Evaluate            the criterion's text alone, the names being set

#include "calculator/calculator.h"
#include "design/criterion.h"
#include "solver/zel_solver.h"
#include "support/plate_project.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

using corvath::algorithm::datatypes::Criterion;
using corvath::algorithm::datatypes::CriterionDescription;
using corvath::algorithm::datatypes::Design;
using corvath::zel::ExtrapolationType;
using corvath::zel::ZELSolver;

constexpr Eigen::Index kDesigns = 100000;
const wchar_t* const kCriterion =
    L"0.8*mass + 150*abs(flat - x)/(1 + sqrt(mass^2 + 3*y)) - 0.1*(x - y)";

const wchar_t* const kCall = L"$PERCENT_ERROR(mass, flat)";
const wchar_t* const kExpanded = L"100*abs(mass - flat)/abs(mass)";

std::unique_ptr<ZELSolver> Open(const wchar_t* criterion) {
  auto project = support::MakePlateProject();
  for (Design& design : project.GetDesignContainer().ModifyDesigns())
    design.SetCriteria({{L"cost", Criterion(CriterionDescription::RHS, L"", criterion)}});
  auto solver = std::make_unique<ZELSolver>(false);
  solver->GetProject() = project;
  solver->Initialize();
  return solver;
}

void Solve(benchmark::State& state, bool with_criteria, const wchar_t* criterion = kCriterion) {
  const auto solver = Open(criterion);
  const Eigen::MatrixXd designs =
      Eigen::MatrixXd::Random(kDesigns, static_cast<Eigen::Index>(solver->GetInputNames().size()));
  double sum = 0.0;
  for (auto _ : state) {
    const auto result =
        solver->ApproximateMatrix(designs, with_criteria, ExtrapolationType::kUnbounded, true);
    if (with_criteria) sum += result.criteria.back();
  }
  if (!(sum == sum)) state.SkipWithError("the criterion has no value");
  state.counters["PerDesign"] = benchmark::Counter(
      static_cast<double>(kDesigns),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_SolveWithCriteria(benchmark::State& state) {
  Solve(state, true);
}
BENCHMARK(BM_SolveWithCriteria)->Unit(benchmark::kMillisecond);
void BM_SolveAlone(benchmark::State& state) {
  Solve(state, false);
}
BENCHMARK(BM_SolveAlone)->Unit(benchmark::kMillisecond);

void BM_SolveWithMacros(benchmark::State& state) {
  Solve(state, true, kCall);
}
BENCHMARK(BM_SolveWithMacros)->Unit(benchmark::kMillisecond);
void BM_SolveExpanded(benchmark::State& state) {
  Solve(state, true, kExpanded);
}
BENCHMARK(BM_SolveExpanded)->Unit(benchmark::kMillisecond);

void BM_Evaluate(benchmark::State& state) {
  CCalculator calculator;
  for (const wchar_t* name : {L"mass", L"flat", L"x", L"y"})
    calculator.SetObject(name, L"", corvath::math::Value(1.5));
  const std::wstring text = kCriterion;
  for (auto _ : state) benchmark::DoNotOptimize(calculator.Evaluate(text));
}
BENCHMARK(BM_Evaluate);

}  // namespace
