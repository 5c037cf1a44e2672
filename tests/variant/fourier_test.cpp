#include "variant/signals/fourier.h"

#include "foundation/constants.h"
#include "support/values.h"
#include "variant/signals/dft.h"
#include "variant/signals/idle_plan.h"

#include <thread>

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

using Numbers = std::vector<Complex>;

Numbers RandomNumbers(std::size_t n) {
  std::mt19937 engine(static_cast<unsigned>(n));
  std::uniform_real_distribution<double> uniform(-1, 1);
  Numbers x(n);
  for (Complex& z : x) z = Complex(uniform(engine), uniform(engine));
  return x;
}

using Step = dft::Status (*)(dft::Descriptor*, Complex*);

Numbers Transformed(Numbers x, Step step = dft::Forward) {
  dft::Descriptor* handle = nullptr;
  EXPECT_EQ(dft::Create(handle, x.size()), dft::kNoError);
  EXPECT_EQ(dft::Commit(handle), dft::kNoError);
  EXPECT_EQ(step(handle, x.data()), dft::kNoError);
  EXPECT_EQ(dft::Free(handle), dft::kNoError);
  return x;
}

/// Largest difference, relative to the root mean square of `b`.
double Error(const Numbers& a, const Numbers& b) {
  double squares = 0;
  double largest = 0;
  for (std::size_t k = 0; k < a.size(); ++k) {
    squares += std::norm(b[k]);
    largest = std::max(largest, std::abs(a[k] - b[k]));
  }
  return largest / std::sqrt(squares / static_cast<double>(a.size()));
}

/// The sum of the definition in long double.
Numbers DirectSum(const Numbers& x) {
  const std::size_t n = x.size();
  std::vector<std::complex<long double>> roots(n);
  for (std::size_t k = 0; k < n; ++k)
    roots[k] = std::polar(1.0L, -2.0L * 3.14159265358979323846264338L * k / n);
  Numbers result(n);
  for (std::size_t k = 0; k < n; ++k) {
    std::complex<long double> sum = 0;
    for (std::size_t j = 0; j < n; ++j)
      sum += std::complex<long double>(x[j].real(), x[j].imag()) * roots[j * k % n];
    result[k] = {static_cast<double>(sum.real()), static_cast<double>(sum.imag())};
  }
  return result;
}

TEST(Dft, IsTheDirectSumForAllSmallLengths) {
  // Every radix, products of them, primes and multiples of primes above the largest radix.
  for (std::size_t n = 1; n <= 130; ++n) {
    const Numbers x = RandomNumbers(n);
    EXPECT_LT(Error(Transformed(x), DirectSum(x)), 3e-15) << n;
  }
  for (const std::size_t n : {512u, 961u, 1001u, 1009u, 1155u, 1024u, 1536u, 1998u, 2187u, 2401u}) {
    const Numbers x = RandomNumbers(n);
    EXPECT_LT(Error(Transformed(x), DirectSum(x)), 6e-15) << n;
  }
}

TEST(Dft, BackwardUndoesForwardTimesTheLength) {
  for (const std::size_t n :
       {2u, 3u, 7u, 37u, 4096u, 59049u, 999983u, 1000000u, 1000003u, 1048576u}) {
    const Numbers x = RandomNumbers(n);
    Numbers y = Transformed(x);
    double before = 0;
    double after = 0;
    for (std::size_t k = 0; k < n; ++k) {
      before += std::norm(x[k]);
      after += std::norm(y[k]);
    }
    EXPECT_NEAR(after / before / static_cast<double>(n), 1, 1e-13) << n;  // Parseval
    y = Transformed(std::move(y), dft::Backward);
    for (Complex& z : y) z /= static_cast<double>(n);
    EXPECT_LT(Error(y, x), 1e-13) << n;
  }
}

TEST(Dft, TablesThatServeAgainGiveTheSame) {
  // Prime and smooth lengths, with small buffers and with ones that are not kept.
  std::vector<Numbers> signals;
  std::vector<Numbers> spectra;
  for (const std::size_t n : {97, 96, 70001, 70000}) {
    signals.push_back(RandomNumbers(n));
    dft::ReleaseIdlePlan();
    spectra.push_back(Transformed(signals.back()));
    EXPECT_EQ(Transformed(signals.back()), spectra.back()) << n;
    EXPECT_LT(Error(Transformed(spectra.back(), dft::Backward),
                    [&] {
                      Numbers scaled = signals.back();
                      for (Complex& z : scaled) z *= static_cast<double>(n);
                      return scaled;
                    }()),
              1e-13)
        << n;
  }
  std::vector<std::thread> threads;
  for (std::size_t k = 0; k < 4; ++k)
    threads.emplace_back([&, k] {
      for (std::size_t i = 0; i < 40; ++i)
        EXPECT_EQ(Transformed(signals[(i * k + i) % 2]), spectra[(i * k + i) % 2]);
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(Dft, ReportsMisuseByStatus) {
  dft::Descriptor* handle = nullptr;
  Complex number = 1;
  EXPECT_EQ(dft::Create(handle, 0), dft::kInvalidLength);
  EXPECT_EQ(dft::Create(handle, static_cast<std::size_t>(-1)), dft::kInvalidLength);
  EXPECT_EQ(dft::Commit(nullptr), dft::kInvalidDescriptor);
  EXPECT_EQ(dft::Forward(nullptr, &number), dft::kInvalidDescriptor);
  EXPECT_EQ(dft::Free(handle), dft::kInvalidDescriptor);
  ASSERT_EQ(dft::Create(handle, 1), dft::kNoError);
  EXPECT_EQ(dft::Backward(handle, &number), dft::kNotCommitted);
  EXPECT_EQ(dft::Free(handle), dft::kNoError);
  EXPECT_EQ(handle, nullptr);
  EXPECT_STREQ(dft::StatusText(dft::kInvalidLength), "Invalid length.");
}

/// n samples of two channels from `first` on, `step` apart.
Value Samples(std::size_t n, double first, double step) {
  Numbers t;
  for (std::size_t i = 0; i < n; ++i) t.push_back(first + step * static_cast<double>(i));
  Numbers second = RandomNumbers(n + 1);
  second.pop_back();
  return Sig(t, {RandomNumbers(n), second});
}

Numbers Row(const Value& signal, std::size_t channel) {
  Numbers row;
  for (std::size_t j = 0; j < signal.Size2(); ++j) row.push_back(signal.GetMatrix()(channel, j));
  return row;
}

TEST(Fft, StandsOnAngularFrequenciesOfTheSpan) {
  Value r;
  fn::fft(r, XY({0, 1}, {3, 5}));
  EXPECT_EQ(r, XY({0, 2 * kPi}, {8, -2}));

  const Value x = Samples(12, 0, 0.25);
  fn::fft(r, x);
  ASSERT_TRUE(r.IsSignal());
  EXPECT_EQ(r.GetVector()(11).real(), 11 * (2 * kPi / 2.75));
  const Numbers channel = Row(x, 1);
  const Numbers first_12(channel.begin(), channel.end());
  EXPECT_LT(Error(Row(r, 1), DirectSum(first_12)), 3e-15);

  // A later start is a phase.
  Value later;
  fn::fft(later, Samples(12, 1, 0.25));
  for (std::size_t k = 0; k < 12; ++k) {
    const Complex expected = r.GetMatrix()(0, k) * std::polar(1.0, later.GetVector()(k).real());
    EXPECT_NEAR(std::abs(later.GetMatrix()(0, k) - expected), 0, 1e-13) << k;
  }
  // A descending signal counts as its ascending form, and so does the result.
  Value down;
  fn::fft(down, XY({2, 1, 0}, {1, 2, 4}));
  fn::fft(r, XY({0, 1, 2}, {4, 2, 1}));
  EXPECT_EQ(down, r);
}

TEST(Fft, InverseRestoresSignalsThatStartAtZero) {
  for (const std::size_t n : {2u, 5u, 64u, 131u}) {
    const Value x = Samples(n, 0, 0.125);
    Value r;
    fn::fft(r, x);
    fn::ifft(r, r);
    ASSERT_EQ(r.GetKind(), Value::SIGNAL);
    for (std::size_t k = 0; k < n; ++k)
      EXPECT_NEAR(r.GetVector()(k).real(), x.GetVector()(k).real(), 1e-13);
    EXPECT_LT(Error(Row(r, 0), Row(x, 0)), 3e-15);
    EXPECT_LT(Error(Row(r, 1), Row(x, 1)), 3e-15);
  }
  // Of an axis that starts elsewhere: the axis goes by the last abscissa, the phase by the first.
  Value r;
  fn::ifft(r, XY({1, 2}, {3, 5}));
  EXPECT_EQ(r.GetVector()(1).real(), kPi);
  EXPECT_NEAR(std::abs(r.GetMatrix()(0, 1) - Complex(1)), 0, 1e-15);  // -1 exp(-i pi)
}

TEST(Fft, ResamplesOnDemand) {
  const Value gap = XY({0, 1, 3}, {0, 1, 3}), down = XY({3, 1, 0}, {3, 1, 0});
  Value expected;
  Value r;
  fn::fft(expected, XY({0, 1, 2, 3}, {0, 1, 2, 3}));
  fn::fft(r, gap, 1, 0, 0);
  EXPECT_EQ(r, expected);
  fn::fft(r, down, 1, 0, 0);
  EXPECT_EQ(r, expected);
  fn::ifft(expected, XY({0, 1, 2, 3}, {0, 1, 2, 3}));
  fn::ifft(r, gap, 1, 0, 0);
  EXPECT_EQ(r, expected);
  // Spans and steps whose quotient is whole up to rounding give no sample more.
  for (int n = 2; n < 400; ++n) {
    Numbers t;
    for (int i = 0; i <= n; ++i)
      if (i != 2 || n < 4) t.push_back(static_cast<double>(i) / n);
    Value signal = XY(t, t);
    fn::fft(r, signal, 1, 0, 0);
    EXPECT_LE(r.Size2(), static_cast<std::size_t>(n) + 2) << n;
    EXPECT_GE(r.Size2(), static_cast<std::size_t>(n) + 1) << n;
  }
}

TEST(Fft, OfAMatrixSumsOverBothIndices) {
  const std::size_t rows = 11, columns = 37;  // more columns than are gathered at a time
  Value::Matrix m(rows, columns);
  const Numbers x = RandomNumbers(rows * columns);
  std::copy(x.begin(), x.end(), m.data().begin());
  Value r;
  fn::fft2d(r, Value(m));
  for (const auto& [k, l] :
       {std::pair<std::size_t, std::size_t>{0, 0}, {3, 5}, {10, 36}, {7, 32}}) {
    Complex sum = 0;
    for (std::size_t i = 0; i < rows; ++i)
      for (std::size_t j = 0; j < columns; ++j)
        sum += m(i, j) * std::polar(1.0, -2 * kPi *
                                             (static_cast<double>(i * k % rows) / rows +
                                              static_cast<double>(j * l % columns) / columns));
    EXPECT_NEAR(std::abs(r.GetMatrix()(k, l) - sum), 0, 1e-12) << k << ' ' << l;
  }
  fn::ifft2d(r, r);
  Numbers back(r.GetMatrix().data().begin(), r.GetMatrix().data().end());
  EXPECT_LT(Error(back, x), 5e-15);
  EXPECT_EQ(Out(fn::fft2d, Value(Value::Matrix(0, 3))),
            "CComputation: fft2d: Creating descriptor failed (Invalid length.)");
  EXPECT_BEGINS(Out(fn::ifft2d, Value(Value::Matrix(3, 0))), "CComputation: ifft2d: Creating");
}

}  // namespace
}  // namespace corvath::math
