#include "design/designs/design_conversion.h"

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

/// Whole tables of designs with 50 inputs become matrices, and back, in time proportional to their
/// cells. Baseline: the bare copy of numbers whose positions are known.
namespace {

using namespace corvath::algorithm::datatypes;
using Kind = corvath::enums::DeterministicProperties;

constexpr std::size_t kInputs = 50;

/// Continuous inputs and, for every third one, 200 states by value or by index.
NamedProperties Inputs(bool discrete) {
  std::vector<CDesignEntry> states;
  for (int i = 0; i < 200; ++i) states.emplace_back(0.5 * i);
  NamedProperties result;
  for (std::size_t i = 0; i < kInputs; ++i) {
    auto property = DeterministicProperties::Continuous(0.0, 100.0);
    if (discrete && i % 3 == 1)
      property = DeterministicProperties::Discrete(Kind::ORDINAL_BY_VALUE, states);
    if (discrete && i % 3 == 2)
      property = DeterministicProperties::Discrete(Kind::ORDINAL_BY_INDEX, states);
    result.emplace_back(L"input_of_the_model_" + std::to_wstring(i), property);
  }
  return result;
}

std::vector<Design> Designs(std::int64_t count) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> state(0, 199);
  const NamedProperties inputs = Inputs(false);
  std::vector<Design> designs;
  for (std::int64_t row = 0; row < count; ++row) {
    EntrySequence values;
    for (auto input = inputs.rbegin(); input != inputs.rend(); ++input)
      values.Append(input->first, CDesignEntry(0.5 * state(random)));
    designs.emplace_back(values, DesignId(static_cast<std::uint64_t>(row)));
  }
  return designs;
}

void BM_BareCopy(benchmark::State& state) {
  const std::vector<Design> designs = Designs(state.range(0));
  for (auto _ : state) {
    Eigen::MatrixXd matrix(state.range(0), static_cast<Eigen::Index>(kInputs));
    for (Eigen::Index row = 0; row < matrix.rows(); ++row) {
      const EntrySequence& values = designs[static_cast<std::size_t>(row)].GetParameters();
      for (std::size_t i = 0; i < kInputs; ++i)
        matrix(row, static_cast<Eigen::Index>(i)) = values[kInputs - 1 - i].second.ToDouble();
    }
    benchmark::DoNotOptimize(matrix.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_BareCopy)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

template <bool kDiscrete>
void BM_DesignsToMatrix(benchmark::State& state) {
  const std::vector<Design> designs = Designs(state.range(0));
  const NamedProperties inputs = Inputs(kDiscrete);
  for (auto _ : state) benchmark::DoNotOptimize(DesignsToMatrix(designs, inputs).eval());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK_TEMPLATE(BM_DesignsToMatrix, false)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_DesignsToMatrix, true)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

template <bool kDiscrete>
void BM_MatrixToDesigns(benchmark::State& state) {
  const NamedProperties inputs = Inputs(kDiscrete);
  const Eigen::MatrixXd matrix = DesignsToMatrix(Designs(state.range(0)), Inputs(false));
  for (auto _ : state) benchmark::DoNotOptimize(MatrixToDesigns(matrix, inputs).data());
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK_TEMPLATE(BM_MatrixToDesigns, false)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(BM_MatrixToDesigns, true)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace
