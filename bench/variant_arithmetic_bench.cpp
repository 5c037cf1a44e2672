#include "variant/operators/arithmetic.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_division.h"

#include <benchmark/benchmark.h>

#include <complex>
#include <vector>

/// Arithmetic on real vectors of 10^6 entries: an operator may take 3 times the plain loop over
/// complex numbers. Arithmetic on scalars: what one operator of an expression costs.
namespace {

using corvath::math::Value;
using Complex = std::complex<double>;
using Operator = void (*)(Value&, const Value&, const Value&);

constexpr std::size_t kEntries = 1000000;

Value RealVector(double first) {
  Value::Vector v(kEntries);
  for (std::size_t i = 0; i < kEntries; ++i) v(i) = first + static_cast<double>(i);
  return Value(std::move(v));
}

template <Operator op>
void BM_Vectors(benchmark::State& state) {
  const Value a = RealVector(1), b = RealVector(2);
  Value result;
  for (auto _ : state) {
    op(result, a, b);
    benchmark::DoNotOptimize(result);
  }
}

/// The plain loop, into memory that it has already.
template <class F>
void PlainLoop(benchmark::State& state, F f) {
  std::vector<Complex> a(kEntries, 1.5), b(kEntries, 2.5), c(kEntries);
  for (auto _ : state) {
    for (std::size_t i = 0; i < kEntries; ++i) c[i] = f(a[i], b[i]);
    benchmark::DoNotOptimize(c.data());
    benchmark::ClobberMemory();
  }
}

void BM_Vectors_AddLoop(benchmark::State& state) {
  PlainLoop(state, [](const Complex& a, const Complex& b) { return a + b; });
}
void BM_Vectors_DivideLoop(benchmark::State& state) {
  PlainLoop(state, corvath::math::Quotient);
}

void BM_VectorTimesScalar(benchmark::State& state) {
  const Value a = RealVector(1), b(2.5);
  Value result;
  for (auto _ : state) {
    Multiply(result, a, b);
    benchmark::DoNotOptimize(result);
  }
}
void BM_VectorTimesScalar_Loop(benchmark::State& state) {
  PlainLoop(state, [](const Complex& a, const Complex&) { return a * Complex(2.5); });
}

template <Operator op>
void BM_Scalars(benchmark::State& state) {
  const Value a(1.5), b(2.5);
  Value result;
  for (auto _ : state) {
    op(result, a, b);
    benchmark::DoNotOptimize(result);
  }
}

void BM_Scalars_Sqrt(benchmark::State& state) {
  const Value a(1.5);
  Value result;
  for (auto _ : state) {
    corvath::math::functions::sqrt(result, a);
    benchmark::DoNotOptimize(result);
  }
}

using corvath::math::Add;
using corvath::math::Divide;
using corvath::math::Multiply;
BENCHMARK(BM_Vectors<Add>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Vectors_AddLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Vectors<Divide>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Vectors_DivideLoop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VectorTimesScalar)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_VectorTimesScalar_Loop)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Scalars<Add>);
BENCHMARK(BM_Scalars<Multiply>);
BENCHMARK(BM_Scalars<Divide>);
BENCHMARK(BM_Scalars_Sqrt);

}  // namespace
