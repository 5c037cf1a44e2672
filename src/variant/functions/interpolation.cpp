#include "variant/functions/interpolation.h"

#include "variant/functions/spline.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/timeline.h"
#include "variant/value/limits.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace corvath::math {

namespace {

using Reals = std::vector<double>;

Reals RealParts(const Value::Vector& v) {
  Reals result(v.size());
  std::transform(v.begin(), v.end(), result.begin(), [](const auto& z) { return z.real(); });
  return result;
}

/// For each abscissa of `axis` the segment of `knots` that serves it: the one that holds it, or the
/// nearest end segment. Knots ascend; of a disordered list the answer is some segment. An ascending
/// axis is one walk along the knots in growing strides, O(m log(n/m + 1)) steps in all.
std::vector<std::size_t> Locate(const Reals& knots, const Reals& axis) {
  std::vector<std::size_t> segments(axis.size());
  const auto inner_begin = knots.begin() + 1;
  const auto inner_end = knots.end() - 1;
  auto place = inner_begin;  // what is in front of it is not above the abscissa before
  double before = -std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < axis.size(); ++i) {
    const double x = axis[i];
    if (!(x >= before)) place = inner_begin;  // NaN too
    before = x;
    std::ptrdiff_t stride = 1;
    while (stride < inner_end - place && !(x < place[stride])) {
      place += stride;
      stride *= 2;
    }
    place = std::upper_bound(place, place + std::min(stride, inner_end - place), x);
    segments[i] = static_cast<std::size_t>(place - inner_begin);
  }
  return segments;
}

/// One channel on the new axis. The arrays that a method was made of must outlive it.
using Method = std::function<void(const Reals& y, Value::Complex* values)>;

Method Spline(const Reals& t, const Reals& axis, double d0, double d1) {
  if (t.size() < 2)
    throw CDimensionException(
        "Input object of wrong dimension. Signal must have at least length 2 for interpolation.");
  return [&t, &axis, d0, d1, segments = Locate(t, axis)](const Reals& y, Value::Complex* values) {
    const ClampedSpline spline(t, y, d0, d1);
    for (std::size_t i = 0; i < axis.size(); ++i) values[i] = spline.Evaluate(segments[i], axis[i]);
  };
}

Method Linear(const Reals& t, const Reals& axis) {
  if (t.size() < 2) throw CDimensionException("Signal must have at least 2 data points.");
  return [&t, &axis, segments = Locate(t, axis)](const Reals& y, Value::Complex* values) {
    for (std::size_t i = 0; i < axis.size(); ++i) {
      const std::size_t j = segments[i];
      const double x = axis[i];
      if (x == t[j])
        values[i] = y[j];  // exactly, also beside an infinite neighbour
      else if (x == t[j + 1])
        values[i] = y[j + 1];
      else
        values[i] = y[j] + (y[j + 1] - y[j]) / (t[j + 1] - t[j]) * (x - t[j]);
    }
  };
}

/// The centre of the three old points that serve x.
std::size_t Centre(const Reals& t, double x) {
  const auto not_below = std::lower_bound(t.begin(), t.end(), x);
  const std::size_t k = std::max<std::size_t>(1, static_cast<std::size_t>(not_below - t.begin()));
  return std::min(k >= 2 ? k - 1 : k, t.size() - 2);
}

Method Quadratic(const Reals& t, const Reals& axis) {
  if (t.size() < 2)
    throw CDimensionException(
        "Input object of wrong dimension. Signal must have at least 2 points of time for "
        "interpolation.");
  if (t.size() == 2) return Linear(t, axis);  // no third point
  std::vector<std::size_t> centres(axis.size());
  std::transform(axis.begin(), axis.end(), centres.begin(),
                 [&t](double x) { return Centre(t, x); });
  return [&t, &axis, centres = std::move(centres)](const Reals& y, Value::Complex* values) {
    for (std::size_t i = 0; i < axis.size(); ++i) {
      const std::size_t c = centres[i];
      const double x = axis[i];
      const double x0 = t[c - 1];
      const double x1 = t[c];
      const double x2 = t[c + 1];
      values[i] = y[c - 1] * ((x - x1) * (x - x2)) / ((x0 - x1) * (x0 - x2)) +
                  y[c] * ((x - x0) * (x - x2)) / ((x1 - x0) * (x1 - x2)) +
                  y[c + 1] * ((x - x0) * (x - x1)) / ((x2 - x0) * (x2 - x1));
    }
  };
}

/// The polynomial through all points in its barycentric form (J.-P. Berrut, L. N. Trefethen,
/// "Barycentric Lagrange interpolation", SIAM Review 46 (2004), pp. 501-517), which takes O(n) time
/// per value and is stable. Differences are scaled to an interval of length 4, where the weights
/// neither grow nor shrink with n as powers of the length.
Method Lagrange(const Reals& t, const Reals& axis, int degree) {
  const long long wanted = static_cast<long long>(degree) + 1;
  if (static_cast<long long>(t.size()) != wanted)
    throw CDimensionException("in object of wrong dimension. Signal must have exactly " +
                              std::to_string(wanted) + " points of time for interpolation.");
  if (degree > kMaxPolynomialDegree)
    throw CDimensionException("Degree of interpolation must not exceed " +
                              std::to_string(kMaxPolynomialDegree) + ".");
  if (!axis.empty() && axis.back() > t.back())
    throw CDimensionException("Can not extrapolate timesignal beyond upper boundaries");
  if (!axis.empty() && axis.front() < t.front())
    throw CDimensionException("Can not extrapolate timesignal beyond lower boundaries");
  const double highest = *std::max_element(t.begin(), t.end());
  for (const double x : axis)
    if (!(x <= highest)) throw CDomainException("Index out of range.");

  const double scale = 4.0 / (t.back() - t.front());
  Reals weights(t.size(), 1.0);
  for (std::size_t i = 0; i < t.size(); ++i)
    for (std::size_t j = 0; j < t.size(); ++j)
      if (j != i) weights[i] /= (t[i] - t[j]) * scale;
  return [&t, &axis, weights = std::move(weights)](const Reals& y, Value::Complex* values) {
    for (std::size_t i = 0; i < axis.size(); ++i) {
      double above = 0.0;
      double below = 0.0;
      bool hit = false;
      for (std::size_t k = 0; k < t.size() && !hit; ++k) {
        hit = axis[i] == t[k];
        if (hit) values[i] = y[k];
        const double share = weights[k] / (axis[i] - t[k]);
        above += share * y[k];
        below += share;
      }
      if (!hit) values[i] = above / below;
    }
  };
}

Method MethodOf(int degree, const Reals& t, const Reals& axis, double d0, double d1) {
  switch (degree) {
    case kSpline:
      return Spline(t, axis, d0, d1);
    case kLinear:
      return Linear(t, axis);
    case kQuadratic:
      return Quadratic(t, axis);
    default:
      return Lagrange(t, axis, degree);
  }
}

}  // namespace

void Interpolate(Value& result, const Value& signal, const Value::Vector& axis, int degree,
                 double d0, double d1) {
  if (signal.IsComplex()) throw CTypeException("Real input object expected.");
  if (!signal.HasTimeline()) throw CTypeException("Input object of wrong type. Signal expected.");
  if (signal.GetVector().size() < 2)
    throw CDimensionException("Signal must have at least 2 data points.");
  if (degree < 0) throw CDimensionException("Degree of interpolation must be positive.");

  Value changed;
  if (HasDuplicates(signal) || signal.IsFlipped()) changed = Ascending(MergeDuplicates(signal));
  const Value& source = changed.IsUninitialized() ? signal : changed;
  const Reals t = RealParts(source.GetVector());
  Reals new_axis = RealParts(axis);
  if (new_axis.size() >= 2 && new_axis.front() > new_axis.back())
    std::reverse(new_axis.begin(), new_axis.end());
  CheckEntries(signal.Size1(), new_axis.size());
  const Method method = MethodOf(degree, t, new_axis, d0, d1);

  const Value::Matrix& old_data = source.GetMatrix();
  Value::Matrix data(old_data.size1(), new_axis.size());
  Reals y(t.size());
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    for (std::size_t i = 0; i < y.size(); ++i) y[i] = old_data(channel, i).real();
    method(y, data.data().begin() + channel * data.size2());
  }
  Value::Vector timeline(new_axis.size());
  std::copy(new_axis.begin(), new_axis.end(), timeline.begin());
  Value interpolated = Value::Signal(std::move(timeline), std::move(data));
  if (!interpolated.IsUninitialized()) {
    interpolated.SetKind(signal.GetKind());
    if (signal.IsFlipped()) interpolated = Flip(interpolated);
  }
  result = std::move(interpolated);
}

void InterpolateByStep(Value& result, const Value& signal, double step, int degree, double d0,
                       double d1) {
  if (!signal.IsOrdered() && degree != kLinear)
    throw CVariantException("Operation is not allowed for unordered input");
  if (IsZero(step)) throw CDomainException("Interpolation increment of size zero detected.");
  if (signal.IsComplex()) throw CTypeException("Real input object expected.");
  if (!signal.HasTimeline()) throw CTypeException("Input object of wrong type. Signal expected.");
  const Value source = MergeDuplicates(Ascending(signal));
  const Value::Vector& t = source.GetVector();
  if (t.size() == 0 || source.Size1() == 0)
    throw CDimensionException("Invalid signal size. Impossible to interpolate.");
  if (!(step > 0.0)) throw CDomainException("Interpolation increment must be positive.");

  const double last = t(t.size() - 1).real();
  const double intervals = std::ceil((last - t(0).real()) / step);
  if (!(intervals >= 0.0 && intervals < static_cast<double>(kMaxEntries)))  // NaN too
    throw CDimensionException("Interpolation increment is too small for the signal.");
  const std::size_t count = static_cast<std::size_t>(intervals) + 1;
  CheckEntries(source.Size1(), count);
  Value::Vector axis(count);
  axis(0) = t(0);
  for (std::size_t i = 1; i < count; ++i) axis(i) = axis(i - 1) + step;
  axis(count - 1) = last;
  Interpolate(result, source, axis, degree, d0, d1);
}

}  // namespace corvath::math
