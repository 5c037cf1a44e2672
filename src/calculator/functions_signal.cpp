#include "calculator/function_adaptors.h"
#include "calculator/function_call.h"
#include "calculator/function_table.h"
#include "variant/calculus.h"
#include "variant/constructors.h"
#include "variant/interpolation.h"
#include "variant/power_mean.h"
#include "variant/timeline.h"

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

}  // namespace

void AddSignalFunctions(FunctionTable& table) {
  table.Add({L"signal", L"series"}, {Function::kAnyCount}, Signal);
  table.Add({L"xydata"}, {1, 2}, XYData);
  table.Add({L"linspace"}, {3}, Linspace);
  table.Add({L"lct"}, {2}, Binary<fn::lct>);
  table.Add({L"extract"}, {2}, Binary<fn::extract>);
  table.Add({L"window"}, {3}, Window);
  table.Add({L"derive"}, {2}, WithDirection<fn::derive>);
  table.Add({L"integrate"}, {2}, WithDirection<fn::integrate>);
  table.Add({L"area"}, {1, 3}, Area);
  table.Add({L"mapping"}, {5}, Mapping);
  table.Add({L"sort"}, {1}, Unary<fn::sort>);
  table.Add({L"interpolate"}, {2, 3, 5}, Interpolate);
  table.Add({L"rms"}, {1}, Unary<fn::rms>);
  table.Add({L"rmsdev"}, {2}, Binary<fn::rmsdev>);
  table.Add({L"powmean"}, {2}, PowerMean);
  table.Add({L"powmeandev"}, {3}, PowerMeanOfDifference);
}

}  // namespace corvath::calculator
