#include "variant/filter_cascade.h"

#include "foundation/math_exception.h"
#include "variant/entrywise.h"

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
  for (std::size_t r = 0; r < sections_; r += kGroup) {
    const std::size_t group = std::min(kGroup, sections_ - r);
    if (columns_ == 3)
      RunGroup<3>(samples, r, group);
    else
      RunGroup<5>(samples, r, group);
  }
}

template <class Number>
template <std::size_t kColumns>
void FilterCascade<Number>::RunGroup(const Samples& samples, std::size_t r,
                                     std::size_t group) const {
  static_assert(kGroup == 4);
  switch (group) {
    case 1:
      return RunSections<kColumns, 1>(samples, r);
    case 2:
      return RunSections<kColumns, 2>(samples, r);
    case 3:
      return RunSections<kColumns, 3>(samples, r);
    default:
      return RunSections<kColumns, 4>(samples, r);
  }
}

/// Some sections sample by sample: the order of operations within a section is that of section
/// after section, but the chains of dependent operations of the sections overlap in the processor.
template <class Number>
template <std::size_t kColumns, std::size_t kSections>
void FilterCascade<Number>::RunSections(const Samples& samples, std::size_t r) const {
  struct Section {
    std::array<Number, kColumns> b;
    std::array<Number, kColumns> a;
    std::array<Number, kColumns> w;  ///< w[j]: the input j samples ago, from j = 1 on
    std::array<Number, kColumns> y;  ///< the output
  };
  std::array<Section, kSections> sections;
  for (Section& s : sections) {
    std::copy_n(b_.data() + r * kColumns, kColumns, s.b.begin());
    std::copy_n(a_.data() + r * kColumns, kColumns, s.a.begin());
    s.w.fill(samples.before);
    s.y.fill(samples.before);
    ++r;
  }
  for (std::size_t k = 0; k < samples.count; ++k) {
    Number& sample = samples.first[static_cast<std::ptrdiff_t>(k) * samples.step];
    Number w = sample;
    for (Section& s : sections) {
      Number y = s.b[0] * w;
      for (std::size_t j = 1; j < kColumns; ++j) y += s.b[j] * s.w[j] - s.a[j] * s.y[j];
      for (std::size_t j = kColumns - 1; j > 1; --j) {
        s.w[j] = s.w[j - 1];
        s.y[j] = s.y[j - 1];
      }
      s.w[1] = w;
      s.y[1] = y;
      w = y;
    }
    sample = w;
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
