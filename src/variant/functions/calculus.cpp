#include "variant/functions/calculus.h"

#include "variant/functions/interpolation.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/timeline.h"

#include <algorithm>
#include <vector>

namespace corvath::math {

namespace {

using Vector = Value::Vector;
using Matrix = Value::Matrix;

void RequireOrdered(const Value& signal) {
  if (!signal.IsOrdered()) throw CVariantException("Operation is not allowed for unordered input");
}

void RequireSignal(const Value& signal) {
  if (!signal.HasTimeline())
    throw CTypeException("Input object of wrong type. Time signal expected.");
}

/// `f(step, y1, y2)` for each interval of each channel, on the abscissae that `direction` names.
/// @param make_f  gives a new f for each channel
template <class MakeF>
Value ByIntervals(const Value& signal, int direction, const char* unknown_direction, MakeF make_f) {
  const char* const too_short = "Signal must have at least 2 data point.";
  RequireOrdered(signal);
  RequireSignal(signal);
  if (signal.IsComplex()) throw CTypeException("Real input SIGNAL expected.");
  if (signal.GetVector().size() < 2) throw CDimensionException(too_short);
  if (direction != kForward && direction != kBackward) throw CTypeException(unknown_direction);

  const Value source = MergeDuplicates(Ascending(signal));
  const Vector& t = source.GetVector();
  const Matrix& y = source.GetMatrix();
  if (t.size() < 2) throw CDimensionException(too_short);
  const std::size_t n = t.size() - 1;
  Vector timeline(n);
  std::copy_n(t.begin() + direction, n, timeline.begin());
  Matrix data(y.size1(), n);
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    auto f = make_f();
    for (std::size_t i = 0; i < n; ++i)
      data(channel, i) =
          f(t(i + 1).real() - t(i).real(), y(channel, i).real(), y(channel, i + 1).real());
  }
  Value result = Value::Signal(std::move(timeline), std::move(data));
  result.SetKind(signal.GetKind());
  return signal.IsFlipped() ? Flip(result) : result;
}

}  // namespace

void functions::derive(Value& result, const Value& signal, int direction) {
  result = ByIntervals(signal, direction,
                       "Unknown difference type. Please only use FORWARD or BACKWARD.", [] {
                         return [](double step, double y1, double y2) {
                           if (step == 0.0)
                             throw CDivideByZeroException("Division by zero occured.");
                           return (y2 - y1) / step;
                         };
                       });
}

void functions::integrate(Value& result, const Value& signal, int direction) {
  result = ByIntervals(signal, direction, "Unknown type. Please only use FORWARD or BACKWARD.", [] {
    return [total = 0.0](double step, double y1, double y2) mutable {
      return total += 0.5 * (y1 + y2) * step;
    };
  });
}

void functions::area(Value& result, const Value& signal) {
  RequireOrdered(signal);
  RequireSignal(signal);
  if (signal.Size1() == 0) throw CDomainException("Size of SIGNAL must be greater than zero.");
  if (signal.GetVector().size() < 2)
    throw CDimensionException("Signal must have at least 2 data point.");
  const Value source = Ascending(signal);
  const Vector& t = source.GetVector();
  const Matrix& y = source.GetMatrix();
  Vector areas(y.size1());
  for (std::size_t channel = 0; channel < areas.size(); ++channel) {
    Value::Complex total = 0.0;
    for (std::size_t i = 0; i + 1 < t.size(); ++i)
      total += 0.5 * (y(channel, i) + y(channel, i + 1)) * (t(i + 1).real() - t(i).real());
    areas(channel) = total;
  }
  result = signal.IsXYData() ? Value(areas(0)) : Value(std::move(areas));
}

void functions::area(Value& result, const Value& signal, double a, double b) {
  RequireOrdered(signal);
  RequireSignal(signal);
  if (signal.GetVector().size() == 0 || signal.Size1() == 0)
    throw CDimensionException("Invalid signal size. Unable to calculate area.");
  const Value source = Ascending(signal);
  const Vector& t = source.GetVector();
  if (!(a >= t(0).real() && b <= t(t.size() - 1).real()))  // NaN too
    throw CDomainException("Bounds out of signal range.");

  std::vector<double> abscissae;
  for (const auto& z : t) abscissae.push_back(z.real());
  for (const double bound : {a, b})
    if (!std::binary_search(abscissae.begin(), abscissae.end(), bound))
      abscissae.insert(std::upper_bound(abscissae.begin(), abscissae.end(), bound), bound);
  Vector axis(abscissae.size());
  std::copy(abscissae.begin(), abscissae.end(), axis.begin());
  Value part;
  Interpolate(part, source, axis, kLinear, 0.0, 0.0);
  window(part, part, a, b);
  area(result, part);
}

}  // namespace corvath::math
