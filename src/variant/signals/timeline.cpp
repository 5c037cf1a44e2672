#include "variant/signals/timeline.h"

#include "variant/functions/interpolation.h"
#include "variant/operators/entrywise.h"
#include "variant/value/limits.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace corvath::math {

namespace {

using Complex = Value::Complex;
using Vector = Value::Vector;
using Matrix = Value::Matrix;

/// The given samples of `signal` in its kind.
Value Samples(const Value& signal, const std::vector<std::size_t>& indices) {
  const Matrix& data = signal.GetMatrix();
  Vector timeline(indices.size());
  Matrix picked(data.size1(), indices.size());
  for (std::size_t i = 0; i < indices.size(); ++i) timeline(i) = signal.GetVector()(indices[i]);
  for (std::size_t channel = 0; channel < data.size1(); ++channel)
    for (std::size_t i = 0; i < indices.size(); ++i) picked(channel, i) = data(channel, indices[i]);
  Value result = Value::Signal(std::move(timeline), std::move(picked));
  if (signal.IsXYData() && !result.IsUninitialized()) result.SetKind(Value::XYDATA);
  return result;
}

/// The ordered union of two ascending timelines; what both have at the cursors is taken once.
Vector Union(const Vector& a, const Vector& b) {
  std::vector<Complex> merged;
  merged.reserve(a.size() + b.size());
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const double x = a(i).real();
    const double y = b(j).real();
    merged.push_back(y < x ? b(j) : a(i));
    if (!(y < x)) ++i;
    if (!(x < y)) ++j;
  }
  merged.insert(merged.end(), a.begin() + static_cast<std::ptrdiff_t>(i), a.end());
  merged.insert(merged.end(), b.begin() + static_cast<std::ptrdiff_t>(j), b.end());
  Vector result(merged.size());
  std::copy(merged.begin(), merged.end(), result.begin());
  return result;
}

}  // namespace

Value Flip(const Value& signal) {
  const std::size_t n = signal.GetVector().size();
  Vector timeline(n);
  std::reverse_copy(signal.GetVector().begin(), signal.GetVector().end(), timeline.begin());
  const Matrix& data = signal.GetMatrix();
  Matrix flipped(data.size1(), data.size2());
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    const Complex* const row = data.data().begin() + channel * data.size2();
    std::reverse_copy(row, row + data.size2(), flipped.data().begin() + channel * data.size2());
  }
  Value result;
  result.SetKind(signal.GetKind());
  result.SetVector(timeline);
  result.SetMatrix(flipped);
  return result;
}

Value Ascending(const Value& signal) {
  return signal.IsFlipped() ? Flip(signal) : signal;
}

bool HasDuplicates(const Value& signal) {
  const Vector& t = signal.GetVector();
  return std::adjacent_find(t.begin(), t.end(), [](const Complex& a, const Complex& b) {
           return a.real() == b.real();
         }) != t.end();
}

Value MergeDuplicates(const Value& signal) {
  if (!signal.HasTimeline())
    throw CTypeException("Input object of must be of type SIGNAL or XYDATA.");
  if (!HasDuplicates(signal)) return signal;
  const Vector& old_timeline = signal.GetVector();
  std::vector<std::size_t> kept;  // first sample of each run of equal abscissae
  for (std::size_t i = 0; i < old_timeline.size(); ++i)
    if (i == 0 || old_timeline(i).real() != old_timeline(i - 1).real()) kept.push_back(i);

  const Matrix& old_data = signal.GetMatrix();
  Vector timeline(kept.size());
  Matrix data(old_data.size1(), kept.size());
  for (std::size_t k = 0; k < kept.size(); ++k) {
    const std::size_t end = k + 1 < kept.size() ? kept[k + 1] : old_timeline.size();
    timeline(k) = old_timeline(kept[k]);
    for (std::size_t channel = 0; channel < old_data.size1(); ++channel) {
      // One after the other: of three and more the last weighs half.
      Complex mean = old_data(channel, kept[k]);
      for (std::size_t i = kept[k] + 1; i < end; ++i) mean = 0.5 * (mean + old_data(channel, i));
      data(channel, k) = mean;
    }
  }
  Value result;
  result.SetKind(signal.GetKind());
  result.SetVector(timeline);
  result.SetMatrix(data);
  return result;
}

bool SameTimeline(const Value& signal1, const Value& signal2) {
  const Vector& a = signal1.GetVector();
  const Vector& b = signal2.GetVector();
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const Complex& x, const Complex& y) { return IsZero(x - y); });
}

void EqualizeTimelines(Value& signal1, Value& signal2, int degree, double d0, double d1) {
  if (!signal1.HasTimeline() || !signal2.HasTimeline())
    throw CTypeException("Inputs must be of type SIGNAL or XYDATA.");
  const Vector merged = Union(signal1.GetVector(), signal2.GetVector());
  Value result1;
  Value result2;
  Interpolate(result1, signal1, merged, degree, d0, d1);
  Interpolate(result2, signal2, merged, degree, d0, d1);
  signal1 = std::move(result1);
  signal2 = std::move(result2);
}

bool IsEquidistant(const Value& signal) {
  if (!signal.HasTimeline())
    throw CTypeException("Equidistance only defined for SIGNAL and XYDATA.");
  const Vector& t = signal.GetVector();
  // Ranges without a branch at each step.
  constexpr std::size_t kRange = 64;
  for (std::size_t begin = 2; begin < t.size(); begin += kRange) {
    const std::size_t end = std::min(begin + kRange, t.size());
    double step_before = t(begin - 1).real() - t(begin - 2).real();
    bool same = true;
    for (std::size_t i = begin; i < end; ++i) {
      const double step = t(i).real() - t(i - 1).real();
      same &= IsZero(step - step_before);
      step_before = step;
    }
    if (!same) return false;
  }
  return true;
}

double SmallestStep(const Value& signal) {
  if (!signal.HasTimeline())
    throw CTypeException("smallestStep: Input object of wrong type. SIGNAL or XYDATA expected.");
  const Vector& t = signal.GetVector();
  if (t.size() < 2)
    throw CDimensionException("Invalid signal size. Unable to calculate smallest step.");
  double smallest = t(1).real() - t(0).real();
  for (std::size_t i = 2; i < t.size(); ++i) {
    const double step = t(i).real() - t(i - 1).real();
    if (step < smallest && step != 0.0) smallest = step;
  }
  const double span = t(t.size() - 1).real() - t(0).real();
  return span / std::ceil(span / smallest);
}

void functions::lct(Value& result, const Value& signal1, const Value& signal2) {
  if (!signal1.HasTimeline() || !signal2.HasTimeline())
    throw CTypeException("Inputs must be of type SIGNAL or XYDATA.");
  if (signal1.GetVector().size() == 0 || signal2.GetVector().size() == 0) {
    result = Value(Vector());
    return;
  }
  const Value ascending1 = Ascending(signal1);
  const Value ascending2 = Ascending(signal2);
  const Vector& a = ascending1.GetVector();
  const Vector& b = ascending2.GetVector();
  if (SameTimeline(ascending1, ascending2)) {
    result = Value(b);
    return;
  }
  const double lower = std::max(a(0).real(), b(0).real());
  const double upper = std::min(a(a.size() - 1).real(), b(b.size() - 1).real());
  if (!(lower <= upper)) throw CDomainException("Common timeline is empty.");

  const auto inside = [&](const Vector& t) {
    std::size_t first = 0;
    std::size_t end = t.size();
    while (first < end && t(first).real() < lower) ++first;
    while (end > first && t(end - 1).real() > upper) --end;
    Vector part(end - first);
    std::copy_n(t.begin() + static_cast<std::ptrdiff_t>(first), part.size(), part.begin());
    return part;
  };
  Vector common = Union(inside(a), inside(b));
  const auto last = std::unique(common.begin(), common.end());
  common.resize(static_cast<std::size_t>(last - common.begin()));
  result = Value(std::move(common));
}

void functions::mapping(Value& result, const Value& signal1, const Value& signal2, int degree,
                        double d0, double d1) {
  if (!signal1.HasTimeline() || !signal2.HasTimeline())
    throw CTypeException("Mapping: Variant inputs must be of type SIGNAL or XYDATA.");
  Value mapped = Ascending(signal1);
  Value other = Ascending(signal2);
  if (!SameTimeline(mapped, other)) {
    try {
      EqualizeTimelines(mapped, other, degree, d0, d1);
    } catch (const CComputationException& e) {
      throw CDomainException(std::string("Mapping: ") + e.what());
    }
  }
  mapped.addChannels(other);

  const Matrix& stacked = mapped.GetMatrix();
  const std::size_t n = stacked.size2();
  const auto row = [&](std::size_t channel) { return stacked.data().begin() + channel * n; };
  const auto repeats = [&](std::size_t earlier, std::size_t later) {
    return std::equal(row(earlier), row(earlier) + n, row(later),
                      [](const Complex& x, const Complex& y) { return IsZero(y - x); });
  };
  std::vector<std::size_t> kept;
  for (std::size_t channel = 0; channel < stacked.size1(); ++channel)
    if (std::none_of(kept.begin(), kept.end(),
                     [&](std::size_t earlier) { return repeats(earlier, channel); }))
      kept.push_back(channel);
  Matrix distinct(kept.size(), n);
  for (std::size_t k = 0; k < kept.size(); ++k)
    std::copy_n(row(kept[k]), n, distinct.data().begin() + k * n);
  mapped.SetMatrix(distinct);
  result = std::move(mapped);
}

void functions::window(Value& result, const Value& signal, double start, double end) {
  if (!signal.HasTimeline())
    throw CTypeException("Window: Functionality only defined for SIGNAL and XYDATA.");
  if (start > end) throw CDimensionException("Window: Minimum must be smaller than maximum.");
  if (signal.GetVector().size() < 2)
    throw CDimensionException("Invalid signal size. Unable to calculate window.");
  const Value ascending = Ascending(signal);
  const Vector& t = ascending.GetVector();
  const std::size_t n = t.size();

  // A sample that misses a bound by no more than the tolerance of zero is inside.
  std::size_t first = 0;
  while (first < n && !(t(first).real() >= start)) ++first;
  if (first > 0 && first < n && IsZero(t(first - 1).real() - start)) --first;
  std::size_t past = n;
  while (past > 0 && !(t(past - 1).real() <= end)) --past;
  if (past > 0 && past < n && IsZero(t(past).real() - end)) ++past;

  std::vector<std::size_t> inside;
  for (std::size_t i = first; i < past; ++i) inside.push_back(i);
  Value part = Samples(ascending, inside);
  if (signal.IsFlipped() && !part.IsUninitialized()) part = Flip(part);
  result = std::move(part);
}

}  // namespace corvath::math
