#include "variant/signals/filters.h"

#include "foundation/math_exception.h"
#include "variant/signals/filter_cascade.h"
#include "variant/signals/filter_design.h"
#include "variant/signals/resampling.h"
#include "variant/signals/timeline.h"

#include <algorithm>
#include <utility>

namespace corvath::math::functions {

namespace {

using Matrix = Value::Matrix;

constexpr const char* kNoSignal = "Input object of wrong type. Time signal expected.";
constexpr const char* kTooShort = "Signal must have at least 2 data point.";

void RequireRealSignal(const Value& signal, const char* too_short) {
  if (signal.IsComplex()) throw CTypeException("Real input object expected.");
  if (!signal.HasTimeline()) throw CTypeException(kNoSignal);
  if (signal.GetVector().size() < 2) throw CDimensionException(too_short);
}

struct Resampling {
  int degree;
  double d0;
  double d1;
};
struct Passes {
  int start1;
  int start2;
  bool backward;
};

/// Each channel of `signal`, real, forward and, if asked for, backward through `cascade`.
void Run(Value& signal, const FilterCascade<double>& cascade, const Passes& passes) {
  Matrix data;
  signal.TakeMatrix(data);
  for (std::size_t channel = 0; channel < data.size1(); ++channel) {
    RunReal(cascade, data, channel, false, passes.start1);
    if (passes.backward) RunReal(cascade, data, channel, true, passes.start2);
  }
  signal.SetRealMatrix(data);
}

/// @param design  gives the FilterSections for the time between two samples
template <class Design>
void Filter(Value& result, const Value& signal, const Resampling& resampling, const Passes& passes,
            Design design) {
  const auto make_cascade = [&](const Value& equidistant) {
    const Value::Vector& t = equidistant.GetVector();
    const FilterSections sections = design(t(1).real() - t(0).real());
    FilterCascade<double> cascade(sections.numerators, sections.denominators);
    RequireStartCondition(passes.start1);
    if (passes.backward) RequireStartCondition(passes.start2);
    return cascade;
  };
  if (!signal.IsFlipped() && IsEquidistant(signal)) {
    const FilterCascade<double> cascade = make_cascade(signal);
    result = signal;  // behind all checks: into the storage that the result has, if it fits
    Run(result, cascade, passes);
    return;
  }
  const bool flipped = signal.IsFlipped();
  Value resampled = Equidistant(Ascending(signal), resampling.degree, resampling.d0, resampling.d1);
  Run(resampled, make_cascade(resampled), passes);
  result = flipped ? Flip(resampled) : std::move(resampled);
}

/// The filters that differ in their prototype alone. It is made after the checks of the signal and
/// in front of those of the cut-off.
template <class MakePrototype>
void FilterBy(MakePrototype make_prototype, Value& result, const Value& signal, const Value& cf,
              int type, const Resampling& resampling, const Passes& passes) {
  RequireRealSignal(signal, kTooShort);
  const AnalogPrototype prototype = make_prototype();
  Filter(result, signal, resampling, passes,
         [&](double step) { return Digitize(prototype, cf, type, step); });
}

}  // namespace

void butterworthFilter(Value& result, const Value& signal, const Value& cf, int order, int type,
                       int interpolation, double d0, double d1, int start1, int start2,
                       bool backward) {
  FilterBy([=] { return ButterworthPrototype(order); }, result, signal, cf, type,
           {interpolation, d0, d1}, {start1, start2, backward});
}

void sineButterworthFilter(Value& result, const Value& signal, const Value& cf, int order, int type,
                           int interpolation, double d0, double d1, int start1, int start2,
                           bool backward) {
  FilterBy([=] { return SineButterworthPrototype(order); }, result, signal, cf, type,
           {interpolation, d0, d1}, {start1, start2, backward});
}

void besselFilter(Value& result, const Value& signal, const Value& cf, int order, int type,
                  int interpolation, double d0, double d1, int start1, int start2, bool backward) {
  FilterBy([=] { return BesselPrototype(order); }, result, signal, cf, type,
           {interpolation, d0, d1}, {start1, start2, backward});
}

void chebyOneFilter(Value& result, const Value& signal, const Value& cf, double ripple, int order,
                    int type, int interpolation, double d0, double d1, int start1, int start2,
                    bool backward) {
  FilterBy([=] { return ChebyshevOnePrototype(order, ripple); }, result, signal, cf, type,
           {interpolation, d0, d1}, {start1, start2, backward});
}

void chebyTwoFilter(Value& result, const Value& signal, const Value& cf, double ripple, int order,
                    int type, int interpolation, double d0, double d1, int start1, int start2,
                    bool backward) {
  FilterBy([=] { return ChebyshevTwoPrototype(order, ripple); }, result, signal, cf, type,
           {interpolation, d0, d1}, {start1, start2, backward});
}

void saeFilter(Value& result, const Value& signal, const Value& cf, int interpolation, double d0,
               double d1, int start1, int start2, bool backward) {
  RequireRealSignal(signal, "Signal must have at least 2 data points.");
  Filter(result, signal, {interpolation, d0, d1}, {start1, start2, backward},
         [&](double step) { return SaeSections(cf, step); });
}

void decimateFilter(Value& result, const Value& signal, int factor, int ratio, int interpolation,
                    double d0, double d1) {
  if (!signal.HasTimeline()) throw CTypeException(kNoSignal);
  if (signal.GetVector().size() < 2) throw CDimensionException(kTooShort);
  if (signal.IsComplex()) throw CTypeException("Real input SIGNAL expected.");
  if (factor < 2) throw CFilterException("The decimation factor must be greater than 1.");
  if (ratio < 2)
    throw CFilterException(
        "The ratio of the new sampling rate to the cut-off frequency has to be 2 or more.");

  // The step of time, positive for a descending signal as well.
  const double cutoff = (1.0 / SmallestStep(Ascending(signal))) / factor / ratio;
  Value filtered;
  butterworthFilter(filtered, signal, Value(cutoff), 2, kLowPass, interpolation, d0, d1,
                    kStartConstant, kStartConstant, true);
  const auto stride = static_cast<std::size_t>(factor);
  const std::size_t count = filtered.GetVector().size() / stride;
  Value::Vector timeline(count);
  Matrix data(std::min<std::size_t>(1, filtered.Size1()), count);
  for (std::size_t i = 0; i < count; ++i) {
    timeline(i) = filtered.GetVector()(i * stride);
    if (data.size1() > 0) data(0, i) = filtered.GetMatrix()(0, i * stride);
  }
  Value decimated = Value::Signal(std::move(timeline), std::move(data));
  if (!decimated.IsUninitialized()) decimated.SetKind(signal.GetKind());
  result = std::move(decimated);
}

}  // namespace corvath::math::functions
