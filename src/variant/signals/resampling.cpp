#include "variant/signals/resampling.h"

#include "variant/functions/interpolation.h"
#include "variant/signals/timeline.h"

#include <cmath>
#include <limits>

namespace corvath::math {

Value Equidistant(Value ascending, int degree, double d0, double d1) {
  if (IsEquidistant(ascending)) return ascending;
  double step = SmallestStep(ascending);
  const Value::Vector& t = ascending.GetVector();
  const double span = t(t.size() - 1).real() - t(0).real();
  // The step divides the span up to rounding. A quotient just above the whole number would make a
  // further sample, a rounding error in front of the last one.
  const double intervals = std::round(span / step);
  while (std::ceil(span / step) > intervals)
    step = std::nextafter(step, std::numeric_limits<double>::infinity());
  Value result;
  InterpolateByStep(result, ascending, step, degree, d0, d1);
  return result;
}

}  // namespace corvath::math
