// Criteria of 100,000 designs, parsing and set-up included.
//
//   SolveWithCriteria   a solve with one criterion of ten operators, four names and two functions
//   SolveAlone          the same solve without it: the difference is the criterion's cost
//   PerDesign           their time for each design: at most 0.3 microseconds apart
//   SolveWithMacros     a solve with one criterion that calls a macro of three stages
//   SolveExpanded       the same with the text that the macro stands for: within 2 times
//   ChainForward        2,000 designs with 100 criteria, each of two reads of the one in front of it
//   ChainBackward       the same criteria in reverse order: within 1.2 times
//   Evaluate            the criterion's text alone, the names being set

#include "calculator/calculator.h"
#include "design/criterion.h"
#include "literature/plate_project.h"
#include "solver/zel_solver.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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

using Criteria = std::vector<std::pair<std::wstring, Criterion>>;

Criteria OneCriterion(const wchar_t* text) {
  return {{L"cost", Criterion(CriterionDescription::RHS, L"", text)}};
}

/// c99 = (c98 + c98)/2, c98 = (c97 + c97)/2 and so on, down to c0 = mass.
Criteria Chain(bool forward) {
  Criteria criteria;
  for (int i = 0; i < 100; ++i) {
    const std::wstring before = L"c" + std::to_wstring(i - 1);
    const std::wstring text = i == 0 ? L"mass" : L"(" + before + L" + " + before + L")/2";
    criteria.emplace_back(L"c" + std::to_wstring(i),
                          Criterion(CriterionDescription::RHS, L"", text));
  }
  if (!forward) std::reverse(criteria.begin(), criteria.end());
  return criteria;
}

std::unique_ptr<ZELSolver> Open(const Criteria& criteria) {
  auto project = literature::MakePlateProject();
  for (Design& design : project.GetDesignContainer().ModifyDesigns())
    for (const auto& [name, criterion] : criteria) design.GetCriteria().Append(name, criterion);
  auto solver = std::make_unique<ZELSolver>(false);
  solver->GetProject() = project;
  solver->Initialize();
  return solver;
}

void Solve(benchmark::State& state, bool with_criteria,
           const Criteria& criteria = OneCriterion(kCriterion),
           Eigen::Index num_designs = kDesigns) {
  const auto solver = Open(criteria);
  const Eigen::MatrixXd designs = Eigen::MatrixXd::Random(
      num_designs, static_cast<Eigen::Index>(solver->GetInputNames().size()));
  double sum = 0.0;
  for (auto _ : state) {
    const auto result =
        solver->ApproximateMatrix(designs, with_criteria, ExtrapolationType::kUnbounded, true);
    if (with_criteria) sum += result.criteria.back();
  }
  if (!(sum == sum)) state.SkipWithError("the criterion has no value");
  state.counters["PerDesign"] = benchmark::Counter(
      static_cast<double>(num_designs),
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
  Solve(state, true, OneCriterion(kCall));
}
BENCHMARK(BM_SolveWithMacros)->Unit(benchmark::kMillisecond);
void BM_SolveExpanded(benchmark::State& state) {
  Solve(state, true, OneCriterion(kExpanded));
}
BENCHMARK(BM_SolveExpanded)->Unit(benchmark::kMillisecond);

void BM_ChainForward(benchmark::State& state) {
  Solve(state, true, Chain(true), 2000);
}
BENCHMARK(BM_ChainForward)->Unit(benchmark::kMillisecond);
void BM_ChainBackward(benchmark::State& state) {
  Solve(state, true, Chain(false), 2000);
}
BENCHMARK(BM_ChainBackward)->Unit(benchmark::kMillisecond);

void BM_Evaluate(benchmark::State& state) {
  CCalculator calculator;
  for (const wchar_t* name : {L"mass", L"flat", L"x", L"y"})
    calculator.SetObject(name, L"", corvath::math::Value(1.5));
  const std::wstring text = kCriterion;
  for (auto _ : state) benchmark::DoNotOptimize(calculator.Evaluate(text));
}
BENCHMARK(BM_Evaluate);

}  // namespace
