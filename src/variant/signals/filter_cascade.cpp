#include "variant/signals/filter_cascade.h"

#include "foundation/math_exception.h"
#include "variant/operators/entrywise.h"

#include <algorithm>
#include <array>
#include <type_traits>

namespace corvath::math {

namespace {

using Complex = Value::Complex;
using Matrix = Value::Matrix;

template <class Number>
Number Convert(const Complex& z) {
  if constexpr (std::is_same_v<Number, double>)
    return z.real();
  else
    return z;
}

}  // namespace

void RequireStartCondition(int start) {
  if (start != kStartZero && start != kStartConstant)
    throw CFilterException("Wrong condition: ZERO, CONSTANT expected.");
}

template <class Number>
FilterCascade<Number>::FilterCascade(const Matrix& numerators, const Matrix& denominators)
    : columns_(numerators.size2()), sections_(numerators.size1()) {
  if (!entrywise::SameSize(numerators, denominators))
    throw CTypeException("Numerator & denominator must be of same size.");
  if (columns_ != 3 && columns_ != 5)
    throw CTypeException(
        "Numerator & denominator must be of size Nx3 (case Low-/Highpass) or Nx5 (case "
        "Bandpass/-stop).");
  b_.reserve(sections_ * columns_);
  a_.reserve(sections_ * columns_);
  for (std::size_t r = 0; r < sections_; ++r) {
    const Number first = Convert<Number>(denominators(r, 0));
    for (std::size_t j = 0; j < columns_; ++j) {
      const Number b = Convert<Number>(numerators(r, j));
      const Number a = Convert<Number>(denominators(r, j));
      b_.push_back(first == 1.0 ? b : b / first);
      a_.push_back(first == 1.0 ? a : a / first);
    }
  }
}

template <class Number>
void FilterCascade<Number>::Run(Number* first, std::size_t count, std::ptrdiff_t step,
                                int start) const {
  RequireStartCondition(start);
  if (count == 0) return;
  // Each section starts from the signal's own first sample, whatever stands in front of it.
  const Samples samples{first, count, step, start == kStartConstant ? *first : Number()};
  for (std::size_t r = 0; r < sections_;)
    r += columns_ == 3 ? RunGroup<3>(samples, r) : RunGroup<5>(samples, r);
}

template <class Number>
template <std::size_t kColumns>
std::size_t FilterCascade<Number>::RunGroup(const Samples& samples, std::size_t r) const {
  const std::size_t left = sections_ - r;
  if constexpr (std::is_same_v<Number, double>) {
    // Band sections in fours would need more registers than there are.
    if (kColumns == 3 && left >= 4) {
      RunPairs<kColumns, 2>(samples, r);
      return 4;
    }
    if (left >= 2) {
      RunPairs<kColumns, 1>(samples, r);
      return 2;
    }
  }
  RunSection<kColumns>(samples, r);
  return 1;
}

// The newest output is subtracted last, so that the next sample waits for one product and one
// difference alone.

template <class Number>
template <std::size_t kColumns>
void FilterCascade<Number>::RunSection(const Samples& samples, std::size_t r) const {
  std::array<Number, kColumns> b;
  std::array<Number, kColumns> a;
  std::array<Number, kColumns> w;  // w[j]: the input j samples ago, from j = 1 on
  std::array<Number, kColumns> y;  // the output
  std::copy_n(b_.data() + r * kColumns, kColumns, b.begin());
  std::copy_n(a_.data() + r * kColumns, kColumns, a.begin());
  w.fill(samples.before);
  y.fill(samples.before);
  for (std::size_t k = 0; k < samples.count; ++k) {
    Number& sample = samples.first[static_cast<std::ptrdiff_t>(k) * samples.step];
    w[0] = sample;
    Number sum = b[0] * w[0];
    for (std::size_t j = kColumns - 1; j > 1; --j) sum += b[j] * w[j] - a[j] * y[j];
    y[0] = (sum + b[1] * w[1]) - a[1] * y[1];
    for (std::size_t j = kColumns - 1; j > 0; --j) {
      w[j] = w[j - 1];
      y[j] = y[j - 1];
    }
    sample = y[1];
  }
}

/// Two sections in the lanes of each of `kPairs` vectors of two numbers. Each section is kDelay
/// samples behind the one in front of it, so that it does not wait for that one's newest output.
template <class Number>
template <std::size_t kColumns, std::size_t kPairs>
void FilterCascade<Number>::RunPairs(const Samples& samples, std::size_t r) const {
  using Pair = double __attribute__((vector_size(16)));
  constexpr std::size_t kDelay = 2;
  constexpr std::size_t kLast = 2 * kPairs - 1;
  constexpr std::size_t kLag = kDelay * kLast;  // of the last section behind the first
  Pair b[kPairs][kColumns];
  Pair a[kPairs][kColumns];
  Pair w[kPairs][kColumns];  // as in RunSection
  Pair y[kPairs][kColumns];
  for (std::size_t p = 0; p < kPairs; ++p)
    for (std::size_t j = 0; j < kColumns; ++j) {
      const double* const numerator = b_.data() + (r + 2 * p) * kColumns + j;
      const double* const denominator = a_.data() + (r + 2 * p) * kColumns + j;
      b[p][j] = Pair{numerator[0], numerator[kColumns]};
      a[p][j] = Pair{denominator[0], denominator[kColumns]};
      w[p][j] = y[p][j] = Pair{samples.before, samples.before};
    }
  double* in = samples.first;
  double* out = samples.first;
  const std::ptrdiff_t step = samples.step;
  const auto advance = [&](double sample) {
    Pair input[kPairs];
    input[0] = Pair{sample, y[0][kDelay][0]};
    for (std::size_t p = 1; p < kPairs; ++p) input[p] = Pair{y[p - 1][kDelay][1], y[p][kDelay][0]};
    for (std::size_t p = 0; p < kPairs; ++p) {
      Pair sum = b[p][0] * input[p];
      for (std::size_t j = kColumns - 1; j > 1; --j) sum += b[p][j] * w[p][j] - a[p][j] * y[p][j];
      const Pair output = (sum + b[p][1] * w[p][1]) - a[p][1] * y[p][1];
      for (std::size_t j = kColumns - 1; j > 1; --j) {
        w[p][j] = w[p][j - 1];
        y[p][j] = y[p][j - 1];
      }
      w[p][1] = input[p];
      y[p][1] = output;
    }
  };
  // A section whose first sample is still to come stays as it is.
  const std::size_t filled = std::min(kLag, samples.count);
  for (std::size_t k = 0; k < kLag; ++k) {
    advance(k < filled ? *in : 0.0);
    if (k < filled) in += step;
    for (std::size_t section = k / kDelay + 1; section <= kLast; ++section)
      for (std::size_t j = 1; j < kColumns; ++j)
        w[section / 2][j][section % 2] = y[section / 2][j][section % 2] = samples.before;
  }
  for (std::size_t k = filled; k < samples.count; ++k, in += step, out += step) {
    advance(*in);
    *out = y[kPairs - 1][1][1];
  }
  for (std::size_t k = 0; k < filled; ++k, out += step) {  // what follows the end goes nowhere
    advance(0.0);
    *out = y[kPairs - 1][1][1];
  }
}

template class FilterCascade<double>;
template class FilterCascade<std::complex<double>>;

void RunReal(const FilterCascade<double>& cascade, Value::Matrix& data, std::size_t channel,
             bool backward, int start) {
  const std::size_t n = data.size2();
  // A complex number is an array of its two parts.
  auto* const first = reinterpret_cast<double*>(data.data().begin() + channel * n);
  if (backward && n > 0)
    cascade.Run(first + 2 * (n - 1), n, -2, start);
  else
    cascade.Run(first, n, 2, start);
}

void functions::filter(Value& result, const Value& signal, const Value& numerators,
                       const Value& denominators, int start) {
  if (!signal.HasTimeline())
    throw CTypeException("Input object of wrong type. Time signal expected.");
  if (signal.IsComplex()) throw CTypeException("Real input object expected.");
  if (!numerators.IsMatrix() || !denominators.IsMatrix())
    throw CTypeException("Numerator & denominator must be of type MATRIX.");
  const Matrix& b = numerators.GetMatrix();
  const Matrix& a = denominators.GetMatrix();
  Matrix data = signal.GetMatrix();
  if (numerators.IsComplex() || denominators.IsComplex()) {
    const FilterCascade<Complex> cascade(b, a);
    for (std::size_t channel = 0; channel < data.size1(); ++channel)
      cascade.Run(data.data().begin() + channel * data.size2(), data.size2(), 1, start);
  } else {
    const FilterCascade<double> cascade(b, a);
    for (std::size_t channel = 0; channel < data.size1(); ++channel)
      RunReal(cascade, data, channel, false, start);
  }
  result = entrywise::WithData(signal, data);
}

}  // namespace corvath::math
