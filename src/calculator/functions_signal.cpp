#include "calculator/function_adaptors.h"
#include "calculator/function_call.h"
#include "calculator/function_table.h"
#include "variant/calculus.h"
#include "variant/constructors.h"
#include "variant/interpolation.h"
#include "variant/peaks.h"
#include "variant/power_mean.h"
#include "variant/timeline.h"

#include <boost/numeric/conversion/cast.hpp>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

// Functions that make signals or work on them.
namespace corvath::calculator {

namespace {

namespace fn = math::functions;
using math::Value;

void Signal(FunctionCall& call, Value& result) {
  if (call.Count() == 0) call.RaiseWrongCount();
  fn::signal(result, call.EvaluateAll());
}

void XYData(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  if (call.Count() == 1)
    fn::xydata(result, x);
  else
    fn::xydata(result, x, call.Evaluate(1));
}

void Linspace(FunctionCall& call, Value& result) {
  const double first = call.Real(0);
  const double last = call.Real(1);
  fn::linspace(result, first, last, call.Unsigned(2));
}

void Window(FunctionCall& call, Value& result) {
  const Value signal = call.Evaluate(0);
  const double start = call.Real(1);
  fn::window(result, signal, start, call.Real(2));
}

void Area(FunctionCall& call, Value& result) {
  const Value signal = call.Evaluate(0);
  if (call.Count() == 1) return fn::area(result, signal);
  const double a = call.Real(1);
  fn::area(result, signal, a, call.Real(2));
}

template <void (*Of)(Value&, const Value&, int)>
void WithDirection(FunctionCall& call, Value& result) {
  const Value signal = call.Evaluate(0);
  Of(result, signal, call.Integer(1));
}

void Mapping(FunctionCall& call, Value& result) {
  const Value first = call.Evaluate(0);
  const Value second = call.Evaluate(1);
  const int degree = call.Integer(2);
  const double d0 = call.Real(3);
  fn::mapping(result, first, second, degree, d0, call.Real(4));
}

void Interpolate(FunctionCall& call, Value& result) {
  const Value signal = call.Evaluate(0);
  const Value at = call.Evaluate(1);
  if (!at.IsVector() && (!at.IsScalar() || at.IsComplex())) call.RaiseWrongArgument(1);
  const int degree = call.Count() > 2 ? call.Integer(2) : static_cast<int>(math::kLinear);
  const double d0 = call.Count() > 3 ? call.Real(3) : 0.0;
  const double d1 = call.Count() > 3 ? call.Real(4) : 0.0;
  if (at.IsVector())
    math::Interpolate(result, signal, at.GetVector(), degree, d0, d1);
  else
    math::InterpolateByStep(result, signal, at.GetScalar().real(), degree, d0, d1);
}

void PowerMean(FunctionCall& call, Value& result) {
  const Value signal = call.Evaluate(0);
  fn::powmean(result, signal, call.Unsigned(1));
}

void PowerMeanOfDifference(FunctionCall& call, Value& result) {
  const Value first = call.Evaluate(0);
  const Value second = call.Evaluate(1);
  fn::powmeandev(result, first, second, call.Unsigned(2));
}

/// Integers of peak searches: the value plus 0.5, truncated. @throws boost::numeric's overflow
template <class Integer>
Integer RoundedUp(double value) {
  if (std::isnan(value)) throw boost::numeric::bad_numeric_cast();
  return boost::numeric_cast<Integer>(value + 0.5);
}

template <math::PeakMode kMode>
void Peaks(FunctionCall& call, Value& result) {
  const std::size_t count = call.Count();
  if (count == 0) call.Raise(L"Need at least one argument in function " + call.GetName());
  if (count > 5) call.Raise(L"Too many arguments in function " + call.GetName());
  const Value x = call.Evaluate(0);
  if (x.IsUninitialized()) call.Raise(L"Argument wrong in function " + call.GetName());
  const auto mind = count > 1 ? RoundedUp<std::int32_t>(call.Real(1)) : 1;
  const double minh = count > 2 ? call.Real(2) : -std::numeric_limits<double>::infinity();
  const double th = count > 3 ? call.Real(3) : 0.0;
  const auto num = count > 4 ? RoundedUp<std::uint64_t>(call.Real(4))
                             : std::numeric_limits<std::uint64_t>::max();
  fn::findpeaks(result, x, kMode, mind, minh, th, num);
}

}  // namespace

void AddSignalFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kConstructors, {L"signal", L"series"}, {Function::kAnyCount}, Signal);
  table.Add(Group::kConstructors, {L"xydata"}, {1, 2}, XYData);
  table.Add(Group::kConstructors, {L"linspace"}, {3}, Linspace);
  table.Add(Group::kSignals, {L"lct"}, {2}, Binary<fn::lct>);
  table.Add(Group::kSignals, {L"extract"}, {2}, Binary<fn::extract>);
  table.Add(Group::kSignals, {L"window"}, {3}, Window);
  table.Add(Group::kSignals, {L"derive"}, {2}, WithDirection<fn::derive>);
  table.Add(Group::kSignals, {L"integrate"}, {2}, WithDirection<fn::integrate>);
  table.Add(Group::kSignals, {L"area"}, {1, 3}, Area);
  table.Add(Group::kSignals, {L"mapping"}, {5}, Mapping);
  table.Add(Group::kSignals, {L"sort"}, {1}, Unary<fn::sort>);
  table.Add(Group::kSignals, {L"interpolate"}, {2, 3, 5}, Interpolate);
  table.Add(Group::kStatistics, {L"rms"}, {1}, Unary<fn::rms>);
  table.Add(Group::kStatistics, {L"rmsdev"}, {2}, Binary<fn::rmsdev>);
  table.Add(Group::kStatistics, {L"powmean"}, {2}, PowerMean);
  table.Add(Group::kStatistics, {L"powmeandev"}, {3}, PowerMeanOfDifference);
  table.Add(Group::kPeaks, {L"peaks"}, {Function::kAnyCount}, Peaks<math::kPeaks>);
  table.Add(Group::kPeaks, {L"minpeaks"}, {Function::kAnyCount}, Peaks<math::kMinPeaks>);
  table.Add(Group::kPeaks, {L"maxpeaks"}, {Function::kAnyCount}, Peaks<math::kMaxPeaks>);
  table.Add(Group::kPeaks, {L"magpeaks"}, {Function::kAnyCount}, Peaks<math::kMagPeaks>);
}

}  // namespace corvath::calculator
