#include "variant/signals/filter_cascade.h"
#include "variant/signals/filter_design.h"
#include "variant/signals/filters.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

/// A filter of order 8, forward and backward over 10^6 samples: a call may take 2 times the plain
/// loop over real numbers that runs all sections per sample. Both write into memory that is there.
/// The call with a new result adds the pages of a value of 32 MB.
namespace {

using corvath::math::Value;

constexpr std::size_t kSamples = 1000000;
constexpr double kStep = 1.0 / 1024;  // exact, so that the axis is equidistant
constexpr double kCutoff = 50.0;

double Sample(std::size_t i) {
  return std::sin(0.01 * static_cast<double>(i)) + std::cos(1.1 * static_cast<double>(i));
}

Value Signal() {
  Value::Vector t(kSamples), y(kSamples);
  for (std::size_t i = 0; i < kSamples; ++i) {
    t(i) = kStep * static_cast<double>(i);
    y(i) = Sample(i);
  }
  return Value::XYData(t, y);
}

void Filter(Value& result, const Value& signal) {
  corvath::math::functions::butterworthFilter(result, signal, Value(kCutoff), 8,
                                              corvath::math::kLowPass, 1, 0, 0, 0, 0, true);
  benchmark::DoNotOptimize(result);
}

void BM_Butterworth8(benchmark::State& state) {
  const Value signal = Signal();
  Value result;
  for (auto _ : state) Filter(result, signal);
}

void BM_Butterworth8_NewResult(benchmark::State& state) {
  const Value signal = Signal();
  for (auto _ : state) {
    Value result;
    Filter(result, signal);
  }
}

/// Both passes without the value around the numbers.
void BM_Butterworth8_Cascade(benchmark::State& state) {
  const corvath::math::FilterSections sections = Digitize(
      corvath::math::ButterworthPrototype(8), Value(kCutoff), corvath::math::kLowPass, kStep);
  const corvath::math::FilterCascade<double> cascade(sections.numerators, sections.denominators);
  std::vector<double> x(kSamples);
  for (std::size_t i = 0; i < kSamples; ++i) x[i] = Sample(i);
  std::vector<double> y(kSamples);
  for (auto _ : state) {
    y = x;
    cascade.Run(y.data(), y.size(), 1, corvath::math::kStartZero);
    cascade.Run(&y.back(), y.size(), -1, corvath::math::kStartZero);
    benchmark::DoNotOptimize(y.data());
  }
}

void BM_Butterworth8_Loop(benchmark::State& state) {
  using corvath::math::FilterSections;
  const FilterSections sections = Digitize(corvath::math::ButterworthPrototype(8), Value(kCutoff),
                                           corvath::math::kLowPass, kStep);
  struct Section {
    double b0, b1, b2, a1, a2, w1, w2, y1, y2;
  };
  std::array<Section, 4> cascade;
  std::vector<double> x(kSamples);
  for (std::size_t i = 0; i < kSamples; ++i) x[i] = Sample(i);
  std::vector<double> y(kSamples);
  for (auto _ : state) {
    y = x;
    for (int pass = 0; pass < 2; ++pass) {
      for (std::size_t r = 0; r < 4; ++r) {
        const double a0 = sections.denominators(r, 0).real();
        cascade[r] = {sections.numerators(r, 0).real() / a0,
                      sections.numerators(r, 1).real() / a0,
                      sections.numerators(r, 2).real() / a0,
                      sections.denominators(r, 1).real() / a0,
                      sections.denominators(r, 2).real() / a0,
                      0,
                      0,
                      0,
                      0};
      }
      for (double& sample : y) {
        double w = sample;
        for (Section& s : cascade) {
          const double out = s.b0 * w + (s.b1 * s.w1 - s.a1 * s.y1) + (s.b2 * s.w2 - s.a2 * s.y2);
          s.w2 = s.w1;
          s.w1 = w;
          s.y2 = s.y1;
          s.y1 = out;
          w = out;
        }
        sample = w;
      }
      std::reverse(y.begin(), y.end());
    }
    benchmark::DoNotOptimize(y.data());
  }
}

BENCHMARK(BM_Butterworth8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Butterworth8_NewResult)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Butterworth8_Cascade)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Butterworth8_Loop)->Unit(benchmark::kMillisecond);

}  // namespace
