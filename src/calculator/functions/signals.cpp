#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "variant/functions/calculus.h"
#include "variant/functions/interpolation.h"
#include "variant/signals/timeline.h"
#include "variant/value/constructors.h"

// Functions that work on signals.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

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

}  // namespace

void AddSignalFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kSignals, {L"lct"}, {2}, Binary<fn::lct>);
  table.Add(Group::kSignals, {L"extract"}, {2}, Binary<fn::extract>);
  table.Add(Group::kSignals, {L"window"}, {3}, Window);
  table.Add(Group::kSignals, {L"derive"}, {2}, WithDirection<fn::derive>);
  table.Add(Group::kSignals, {L"integrate"}, {2}, WithDirection<fn::integrate>);
  table.Add(Group::kSignals, {L"area"}, {1, 3}, Area);
  table.Add(Group::kSignals, {L"mapping"}, {5}, Mapping);
  table.Add(Group::kSignals, {L"sort"}, {1}, Unary<fn::sort>);
  table.Add(Group::kSignals, {L"interpolate"}, {2, 3, 5}, Interpolate);
}

void AddSignalHelp(HelpTable& table) {
  const ArgumentHelp signal = S(L"The signal.");
  const ArgumentHelp other{L"T", kReal, kSignals, false, L"The other signal."};
  const ArgumentHelp direction{
      L"d", kReal, L"FORWARD, BACKWARD", false,
      L"Whether the results stand at the first or the last abscissa of the intervals."};
  const auto type = [](bool optional, const wchar_t* description) {
    return Number(L"type", description, optional, L"SPLINE, LINEAR, QUAD");
  };
  table[L"lct"] = {
      {L"lct(S, T)", L"Abscissae of both signals in the range that they share.", {signal, other}}};
  table[L"extract"] = {{L"extract(x, i)",
                        L"Rows by number. A number gives a vector, several a matrix.",
                        {X(L"The rows; row 0 of a signal is its abscissa, row k its k-th channel.",
                           L"matrix, signal, xy-data"),
                         {L"i", kReal, L"scalar, vector", false, L"The numbers, from 0."}}}};
  table[L"window"] = {{L"window(S, a, b)",
                       L"The samples with abscissae from a to b; uninitialized if there are none.",
                       {signal, Number(L"a", L"The begin."), Number(L"b", L"The end.")}}};
  table[L"derive"] = {
      {L"derive(S, d)", L"Difference quotients, one less than samples.", {signal, direction}}};
  table[L"integrate"] = {{L"integrate(S, d)",
                          L"Running integral by the trapezoidal rule, one value less than samples.",
                          {signal, direction}}};
  table[L"area"] = {{L"area(S)",
                     L"Integral of each channel by the trapezoidal rule.",
                     {S(L"The signal.", kNumbers)}},
                    {L"area(S, a, b)",
                     L"Integral from a to b, both inside the signal.",
                     {signal, Number(L"a", L"The begin."), Number(L"b", L"The end.")}}};
  table[L"mapping"] = {{L"mapping(S, T, type, d0, d1)",
                        L"The channels of both signals on one abscissa, equal channels once.",
                        {signal, other, type(false, L"The interpolation where abscissae differ."),
                         Number(L"d0", L"The slope at the begin, for SPLINE."),
                         Number(L"d1", L"The slope at the end, for SPLINE.")}}};
  table[L"sort"] = {{L"sort(x)",
                     L"Numbers, or samples by their abscissa, in ascending order.",
                     {X(L"What to sort.", L"scalar, vector, signal, xy-data", kReal)}}};
  table[L"interpolate"] = {
      {L"interpolate(S, at [, type [, d0, d1]])",
       L"The signal at other abscissae. SPLINE is a cubic spline, LINEAR a polygon, QUAD parabolas "
       L"through three neighbours; a number n above 2 is one polynomial through all n + 1 samples.",
       {signal,
        {L"at", kReal, L"scalar, vector", false,
         L"The new abscissae, or the step between them from the first to the last one of S."},
        type(true, L"The interpolation (default value is LINEAR)."),
        Number(L"d0", L"The slope at the begin, for SPLINE (default value is 0).", true),
        Number(L"d1", L"The slope at the end, for SPLINE (default value is 0).", true)}}};
}

}  // namespace corvath::calculator
