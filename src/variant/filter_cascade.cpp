#include "variant/filter_cascade.h"

#include "foundation/math_exception.h"
#include "variant/entrywise.h"

#include <algorithm>
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

/// Each channel of `signal` through `cascade`, then back to complex data.
template <class Number>
Matrix RunChannels(const FilterCascade<Number>& cascade, const Matrix& data, int start) {
  Matrix filtered(data.size1(), data.size2());
  std::vector<Number> samples(data.size2());
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    const Complex* const row = data.data().begin() + channel * data.size2();
    std::transform(row, row + data.size2(), samples.begin(), Convert<Number>);
    cascade.Run(samples.data(), samples.size(), start);
    std::copy(samples.begin(), samples.end(), filtered.data().begin() + channel * data.size2());
  }
  return filtered;
}

}  // namespace

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
void FilterCascade<Number>::Run(Number* samples, std::size_t count, int start) const {
  if (start != kStartZero && start != kStartConstant)
    throw CFilterException("Wrong condition: ZERO, CONSTANT expected.");
  const Number before = start == kStartConstant && count > 0 ? samples[0] : Number();
  if (columns_ == 3)
    RunSections<3>(samples, count, before);
  else
    RunSections<5>(samples, count, before);
}

/// All sections sample by sample: the order of operations within a section is that of section after
/// section, but the chains of dependent operations of the sections overlap in the processor.
template <class Number>
template <std::size_t kColumns>
void FilterCascade<Number>::RunSections(Number* samples, std::size_t count, Number before) const {
  constexpr std::size_t kDelays = kColumns - 1;
  // past[r * kDelays + j - 1]: what went into section r, which is what left section r - 1, j samples
  // ago.
  std::vector<Number> past((sections_ + 1) * kDelays, before);
  for (std::size_t k = 0; k < count; ++k) {
    Number w = samples[k];
    Number* w_past = past.data();
    const Number* b = b_.data();
    const Number* a = a_.data();
    for (std::size_t r = 0; r < sections_; ++r, b += kColumns, a += kColumns) {
      Number* const y_past = w_past + kDelays;
      Number y = b[0] * w;
      for (std::size_t j = 1; j < kColumns; ++j) y += b[j] * w_past[j - 1] - a[j] * y_past[j - 1];
      for (std::size_t j = kDelays - 1; j > 0; --j) w_past[j] = w_past[j - 1];
      w_past[0] = w;
      w = y;
      w_past = y_past;
    }
    for (std::size_t j = kDelays - 1; j > 0; --j) w_past[j] = w_past[j - 1];
    w_past[0] = w;
    samples[k] = w;
  }
}

template class FilterCascade<double>;
template class FilterCascade<std::complex<double>>;

void functions::filter(Value& result, const Value& signal, const Value& numerators,
                       const Value& denominators, int start) {
  if (!signal.HasTimeline())
    throw CTypeException("Input object of wrong type. Time signal expected.");
  if (signal.IsComplex()) throw CTypeException("Real input object expected.");
  if (!numerators.IsMatrix() || !denominators.IsMatrix())
    throw CTypeException("Numerator & denominator must be of type MATRIX.");
  const Matrix& b = numerators.GetMatrix();
  const Matrix& a = denominators.GetMatrix();
  Matrix data = numerators.IsComplex() || denominators.IsComplex()
                    ? RunChannels(FilterCascade<Complex>(b, a), signal.GetMatrix(), start)
                    : RunChannels(FilterCascade<double>(b, a), signal.GetMatrix(), start);
  result = entrywise::WithData(signal, data);
}

}  // namespace corvath::math
