#include "variant/functions/interpolation.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <complex>
#include <vector>

/// A signal of 10^6 samples at 10^6 ascending new abscissae, linear, beside the plain walk along both
/// axes over real numbers. A call adds the pages of a new value of 32 MB.
namespace {

using corvath::math::Value;

constexpr std::size_t kSamples = 1000000;

/// Uneven steps.
double Abscissa(std::size_t i) {
  return static_cast<double>(i) + 0.4 * std::sin(0.7 * static_cast<double>(i));
}
double NewAbscissa(std::size_t i) {
  return 0.999 * static_cast<double>(i) + 0.3;
}

void BM_Interpolate_Linear(benchmark::State& state) {
  Value::Vector t(kSamples), y(kSamples), axis(kSamples);
  for (std::size_t i = 0; i < kSamples; ++i) {
    t(i) = Abscissa(i);
    y(i) = std::cos(0.01 * static_cast<double>(i));
    axis(i) = NewAbscissa(i);
  }
  const Value signal = Value::XYData(t, y);
  Value result;
  for (auto _ : state) {
    corvath::math::Interpolate(result, signal, axis, corvath::math::kLinear, 0, 0);
    benchmark::DoNotOptimize(result);
  }
}

void BM_Interpolate_Walk(benchmark::State& state) {
  std::vector<double> t(kSamples), y(kSamples), axis(kSamples);
  for (std::size_t i = 0; i < kSamples; ++i) {
    t[i] = Abscissa(i);
    y[i] = std::cos(0.01 * static_cast<double>(i));
    axis[i] = NewAbscissa(i);
  }
  std::vector<double> values(kSamples);
  for (auto _ : state) {
    std::size_t j = 0;
    for (std::size_t i = 0; i < kSamples; ++i) {
      while (j + 2 < kSamples && t[j + 1] <= axis[i]) ++j;
      values[i] = y[j] + (y[j + 1] - y[j]) / (t[j + 1] - t[j]) * (axis[i] - t[j]);
    }
    benchmark::DoNotOptimize(values.data());
    benchmark::ClobberMemory();
  }
}

BENCHMARK(BM_Interpolate_Linear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Interpolate_Walk)->Unit(benchmark::kMillisecond);

}  // namespace
