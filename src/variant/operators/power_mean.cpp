#include "variant/operators/power_mean.h"

#include "variant/operators/arithmetic.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/entrywise.h"
#include "variant/signals/timeline.h"

#include <limits>
#include <string>

namespace corvath::math::functions {

namespace {

using Complex = Value::Complex;

Complex ChannelMean(const Value& signal, std::size_t channel, double q) {
  const std::size_t n = signal.GetVector().size();
  const auto t = [&](std::size_t i) { return signal.GetVector()(i).real(); };
  const auto power = [&](std::size_t i) { return Power(signal.GetMatrix()(channel, i), q); };
  const double span = 0.5 * ((3 * t(n - 1) - t(n - 2)) - (3 * t(0) - t(1)));
  if (span == 0.0) return std::numeric_limits<double>::quiet_NaN();

  Complex integral = (t(1) - t(0)) * power(0);
  for (std::size_t i = 1; i + 1 < n; ++i) integral += 0.5 * power(i) * (t(i + 1) - t(i - 1));
  integral += (t(n - 1) - t(n - 2)) * power(n - 1);
  return Power(integral / span, 1.0 / q);
}

void RequireSignals(const Value& signal1, const Value& signal2, const std::string& prefix) {
  if (!signal1.HasTimeline() || !signal2.HasTimeline())
    throw CTypeException(prefix + "Inputs must be of type SIGNAL or XYDATA.");
  if (signal1.Size1() != signal2.Size1())
    throw CDimensionException(prefix + "Inputs need the same number of channels.");
}

}  // namespace

void powmean(Value& result, const Value& signal, std::uint64_t q) {
  if (!signal.IsOrdered()) throw CVariantException("Operation is not allowed for unordered input");
  if (signal.IsComplex() || q == 0)
    throw CTypeException("Real input object and positive exponent expected.");
  if (!signal.HasTimeline())
    throw CTypeException("Input object of wrong type. Time signal expected.");
  const Value source = MergeDuplicates(signal);
  if (source.GetVector().size() < 2) throw CTypeException("At least two sample points expected.");
  try {
    Value::Vector means(source.Size1());
    for (std::size_t channel = 0; channel < means.size(); ++channel)
      means(channel) = ChannelMean(source, channel, static_cast<double>(q));
    result = signal.IsXYData() && means.size() == 1 ? Value(means(0)) : Value(std::move(means));
  } catch (const std::exception& e) {
    throw CComputationException(std::string("Exception occured: ") + e.what());
  }
}

void rms(Value& result, const Value& signal) {
  powmean(result, signal, 2);
}

void rmsdev(Value& result, const Value& signal1, const Value& signal2) {
  RequireSignals(signal1, signal2, "rmsDev: ");
  Value difference;
  Subtract(difference, signal1, signal2);
  rms(result, difference);
}

void powmeandev(Value& result, const Value& signal1, const Value& signal2, std::uint64_t q) {
  RequireSignals(signal1, signal2, "");
  Value difference;
  Subtract(difference, signal1, signal2);
  powmean(result, difference, q);
}

}  // namespace corvath::math::functions
