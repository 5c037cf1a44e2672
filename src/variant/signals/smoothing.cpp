#include "foundation/math_exception.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/filters.h"
#include "variant/signals/timeline.h"

#include <algorithm>
#include <vector>

namespace corvath::math::functions {

namespace {

/// Means of `x` over p samples to either side where they are there, 2 p <= n. Sums run within blocks
/// of the window's length, in both directions, so that each window is the end of one block and the
/// begin of the next: unlike in a running sum nothing cancels, and NaN or infinity reach only the
/// windows that hold them.
void Smooth(const std::vector<double>& x, std::size_t p, std::vector<double>& means) {
  const std::size_t n = x.size();
  const std::size_t length = 2 * p + 1;
  std::vector<double> from_begin(x);
  std::vector<double> to_end(x);
  for (std::size_t i = 1; i < n; ++i)
    if (i % length != 0) from_begin[i] += from_begin[i - 1];
  for (std::size_t i = n - 1; i-- > 0;)
    if ((i + 1) % length != 0) to_end[i] += to_end[i + 1];

  for (std::size_t i = p; i + p < n; ++i) {
    const std::size_t first = i - p;
    const double sum = first % length == 0 ? to_end[first] : to_end[first] + from_begin[i + p];
    means[i] = sum / static_cast<double>(length);
  }
  double head = 0.0;
  double tail = 0.0;
  for (std::size_t i = 0; i < 2 * p; ++i) {
    head += x[i];
    tail += x[n - 1 - i];
    if (i < p) continue;
    const double count = static_cast<double>(i + 1);
    means[i - p] = head / count;
    means[n - 1 - (i - p)] = tail / count;
  }
}

}  // namespace

void smoothFilter(Value& result, const Value& signal, int points) {
  if (!signal.HasTimeline())
    throw CTypeException("Input object of wrong type. Time signal expected.");
  if (signal.IsComplex()) throw CTypeException("Real input SIGNAL expected.");
  const Value source = MergeDuplicates(signal);
  const std::size_t n = source.GetVector().size();
  if (points < 1 || static_cast<std::size_t>(points) > n / 2)
    throw CFilterException(
        "Number of points must be a positive integer and less than half the size of the input.");

  Value::Matrix data(source.Size1(), n);
  std::vector<double> x(n);
  std::vector<double> means(n);
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    for (std::size_t i = 0; i < n; ++i) x[i] = source.GetMatrix()(channel, i).real();
    Smooth(x, static_cast<std::size_t>(points), means);
    std::copy(means.begin(), means.end(), data.data().begin() + channel * n);
  }
  result = entrywise::WithData(source, data);
}

}  // namespace corvath::math::functions
