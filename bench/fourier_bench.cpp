#include "variant/signals/dft.h"

#include <benchmark/benchmark.h>
#include <unsupported/Eigen/FFT>
#ifdef ZEL_BENCH_FFTW
#include <fftw3.h>
#endif

#include <cmath>
#include <complex>
#include <vector>

/// Transforms of 2^20, 10^6 and the prime 999983 complex numbers in place, tables included as in a
/// call of fft: 2^20 may take 4 times and the prime 8 times FFTW (present in the table if its
/// library is installed), both beside n log2(n) complex multiply-adds. Eigen's transform takes
/// quadratic time for the prime, so it has no line there.
namespace {

using Complex = std::complex<double>;

std::vector<Complex> Samples(std::size_t n) {
  std::vector<Complex> x(n);
  for (std::size_t k = 0; k < n; ++k) {
    const double t = static_cast<double>(k);
    x[k] = {std::cos(0.3 * t), std::sin(0.001 * t)};
  }
  return x;
}

void BM_Dft(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<Complex> x = Samples(n);
  for (auto _ : state) {
    corvath::math::dft::Descriptor* handle = nullptr;
    corvath::math::dft::Create(handle, n);
    corvath::math::dft::Commit(handle);
    corvath::math::dft::Forward(handle, x.data());
    corvath::math::dft::Free(handle);
    benchmark::DoNotOptimize(x.data());
  }
}

/// The transform alone.
void BM_Dft_Committed(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<Complex> x = Samples(n);
  corvath::math::dft::Descriptor* handle = nullptr;
  corvath::math::dft::Create(handle, n);
  corvath::math::dft::Commit(handle);
  for (auto _ : state) {
    state.PauseTiming();
    x = Samples(n);  // or the numbers would grow out of range
    state.ResumeTiming();
    corvath::math::dft::Forward(handle, x.data());
    benchmark::DoNotOptimize(x.data());
  }
  corvath::math::dft::Free(handle);
}

void BM_Dft_MultiplyAdds(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const auto rounds = static_cast<std::size_t>(std::ceil(std::log2(static_cast<double>(n))));
  std::vector<Complex> x = Samples(n);
  const Complex w = std::polar(1.0, 0.1);
  for (auto _ : state) {
    for (std::size_t round = 0; round < rounds; ++round)
      for (Complex& z : x)
        z = {z.real() * w.real() - z.imag() * w.imag() + 1e-3,
             z.real() * w.imag() + z.imag() * w.real() - 1e-3};
    benchmark::DoNotOptimize(x.data());
    benchmark::ClobberMemory();
  }
}

void BM_Dft_Eigen(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const std::vector<Complex> x = Samples(n);
  std::vector<Complex> y(n);
  for (auto _ : state) {
    Eigen::FFT<double> fft;
    fft.fwd(y.data(), x.data(), static_cast<Eigen::Index>(n));
    benchmark::DoNotOptimize(y.data());
  }
}

#ifdef ZEL_BENCH_FFTW
void BM_Dft_Fftw(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<Complex> x = Samples(n);
  auto* const data = reinterpret_cast<fftw_complex*>(x.data());
  for (auto _ : state) {
    fftw_plan plan = fftw_plan_dft_1d(static_cast<int>(n), data, data, FFTW_FORWARD, FFTW_ESTIMATE);
    fftw_execute(plan);
    fftw_destroy_plan(plan);
    benchmark::DoNotOptimize(x.data());
  }
  fftw_cleanup();
}
BENCHMARK(BM_Dft_Fftw)->Arg(1 << 20)->Arg(1000000)->Arg(999983)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(BM_Dft)->Arg(1 << 20)->Arg(1000000)->Arg(999983)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dft_Committed)->Arg(1 << 20)->Arg(1000000)->Arg(999983)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dft_MultiplyAdds)->Arg(1 << 20)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Dft_Eigen)->Arg(1 << 20)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
