// Parsing of expression texts.
//
//   NestedParentheses/40  forty pairs: microseconds, and in proportion to their number
//   Chain/1000000         half a million operators: linear in the text

#include "calculator/parser.h"

#include <benchmark/benchmark.h>

namespace {

void BM_NestedParentheses(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const std::wstring text = std::wstring(n, L'(') + L"x" + std::wstring(n, L')');
  for (auto _ : state) benchmark::DoNotOptimize(corvath::calculator::Parse(text).full);
}
BENCHMARK(BM_NestedParentheses)->Arg(40)->Arg(80)->Arg(160);

void BM_Chain(benchmark::State& state) {
  std::wstring text = L"x";
  while (text.size() < static_cast<std::size_t>(state.range(0))) text += L"+x";
  for (auto _ : state) benchmark::DoNotOptimize(corvath::calculator::Parse(text).full);
}
BENCHMARK(BM_Chain)->Arg(1000)->Arg(1000000)->Unit(benchmark::kMicrosecond);

}  // namespace
