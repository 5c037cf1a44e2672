#include "variant/signals/filters.h"

#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"

#include <initializer_list>
#include <string>
#include <utility>

// Filters. The signal is evaluated into the result and worked on there: it may be large, and no
// copy of it is needed.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

/// The last arguments of the recursive filters, evaluated from left to right.
struct Run {
  Run(FunctionCall& call, std::size_t first)
      : interpolation(call.Integer(first)),
        d0(call.Real(first + 1)),
        d1(call.Real(first + 2)),
        start1(call.Integer(first + 3)),
        start2(call.Integer(first + 4)),
        backward(call.Boolean(first + 5)) {}

  int interpolation;
  double d0;
  double d1;
  int start1;
  int start2;
  bool backward;
};

using Filter = void (*)(Value&, const Value&, const Value& cf, int order, int type, int, double,
                        double, int, int, bool);
using RippleFilter = void (*)(Value&, const Value&, const Value& cf, double ripple, int order,
                              int type, int, double, double, int, int, bool);

template <Filter kFilter>
void FilterBy(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  const Value cf = call.Evaluate(1);
  const int order = call.Integer(2);
  const int type = call.Integer(3);
  const Run run(call, 4);
  kFilter(result, result, cf, order, type, run.interpolation, run.d0, run.d1, run.start1,
          run.start2, run.backward);
}

template <RippleFilter kFilter>
void RippleFilterBy(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  const Value cf = call.Evaluate(1);
  const double ripple = call.Real(2);
  const int order = call.Integer(3);
  const int type = call.Integer(4);
  const Run run(call, 5);
  kFilter(result, result, cf, ripple, order, type, run.interpolation, run.d0, run.d1, run.start1,
          run.start2, run.backward);
}

void Sae(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  const Value cf = call.Evaluate(1);
  const Run run(call, 2);
  fn::saeFilter(result, result, cf, run.interpolation, run.d0, run.d1, run.start1, run.start2,
                run.backward);
}

void Decimate(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  const int factor = call.Integer(1);
  const int ratio = call.Integer(2);
  const int interpolation = call.Integer(3);
  const double d0 = call.Real(4);
  fn::decimateFilter(result, result, factor, ratio, interpolation, d0, call.Real(5));
}

void Smooth(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  fn::smoothFilter(result, result, call.Integer(1));
}

constexpr const wchar_t* kHowFiltersRun =
    L"<br>Runs forward in time and, if backward is true, over the outcome backward in time: no "
    L"phase is left, the gain counts twice. Each channel is filtered for itself; a signal that is "
    L"not equidistant is resampled first, to its smallest step.";

/// The signal, `own` arguments, then those of the run.
void AddRecursive(HelpTable& table, const std::wstring& name, const wchar_t* text,
                  std::initializer_list<ArgumentHelp> own) {
  FunctionHelp record{name + L"(S", std::wstring(text) + kHowFiltersRun, {S(L"The signal.")}};
  record.arguments.insert(record.arguments.end(), own);
  for (const ArgumentHelp& argument :
       {Interpolation(), FirstSlope(), LastSlope(),
        Number(L"start1", L"What stood in front of the first sample: zeros, or the sample itself.",
               false, L"ZERO, CONSTANT"),
        Number(L"start2", L"The same for the run backward.", false, L"ZERO, CONSTANT"),
        ArgumentHelp{L"backward", L"TRUE, FALSE", L"boolean", false, L"Whether to run backward."}})
    record.arguments.push_back(argument);
  for (std::size_t i = 1; i < record.arguments.size(); ++i)
    record.signature += L", " + record.arguments[i].name;
  record.signature += L")";
  table[name] = {std::move(record)};
}

}  // namespace

void AddFilterFunctions(FunctionTable& table) {
  table.Add(FunctionGroup::kFilters, {L"butterworthFilter"}, {10}, FilterBy<fn::butterworthFilter>);
  table.Add(FunctionGroup::kFilters, {L"sineButterworthFilter"}, {10},
            FilterBy<fn::sineButterworthFilter>);
  table.Add(FunctionGroup::kFilters, {L"besselFilter"}, {10}, FilterBy<fn::besselFilter>);
  table.Add(FunctionGroup::kFilters, {L"chebyOneFilter"}, {11}, RippleFilterBy<fn::chebyOneFilter>);
  table.Add(FunctionGroup::kFilters, {L"chebyTwoFilter"}, {11}, RippleFilterBy<fn::chebyTwoFilter>);
  table.Add(FunctionGroup::kFilters, {L"saeFilter"}, {8}, Sae);
  table.Add(FunctionGroup::kFilters, {L"decimateFilter"}, {6}, Decimate);
  table.Add(FunctionGroup::kFilters, {L"smoothFilter"}, {2}, Smooth);
}

void AddFilterHelp(HelpTable& table) {
  const ArgumentHelp cf{L"cf", kReal, L"scalar, vector", false,
                        L"The cut-off, below half the sampling rate, in cycles per unit of the "
                        L"abscissa; for BANDPASS and BANDSTOP a vector of lower and upper edge."};
  const ArgumentHelp order = Number(L"order", L"The order, from 1 on.");
  const ArgumentHelp type =
      Number(L"type", L"What passes.", false, L"LOWPASS, HIGHPASS, BANDPASS, BANDSTOP");
  AddRecursive(table, L"butterworthFilter",
               L"Butterworth filter: flat pass band, 3 dB down at the cut-off.", {cf, order, type});
  AddRecursive(table, L"sineButterworthFilter",
               L"Butterworth filter whose poles p are moved to 2 asin(sin(0.5) p).",
               {cf, order, type});
  AddRecursive(table, L"besselFilter",
               L"Bessel filter: nearly constant delay, 3 dB down at the cut-off.",
               {cf, Number(L"order", L"The order, 1 to 10."), type});
  AddRecursive(table, L"chebyOneFilter",
               L"Chebyshev filter of the first kind: ripple in the pass band. It is steeper than a "
               L"Butterworth filter.",
               {cf,
                Number(L"ripple",
                       L"A positive number e; the gain in the pass band is 1/sqrt(1 + "
                       L"e<sup>2</sup>) to 1."),
                order, type});
  AddRecursive(
      table, L"chebyTwoFilter",
      L"Chebyshev filter of the second kind: ripple in the stop band. That begins at the cut-off.",
      {cf, Number(L"ripple", L"The highest gain in the stop band, between 0 and 1."), order, type});
  AddRecursive(
      table, L"saeFilter", L"Channel filter of SAE J211.",
      {Number(L"cf", L"The channel frequency class, in cycles per unit of the abscissa.")});
  table[L"decimateFilter"] = {
      {L"decimateFilter(S, factor, ratio, interpolation, d0, d1)",
       L"Every factor-th sample of the first channel, behind a low pass. The low pass is a "
       L"Butterworth filter of order 2 without phase; its cut-off is the new sampling rate divided "
       L"by ratio.",
       {S(L"The signal."), Number(L"factor", L"The factor, from 2 on."),
        Number(L"ratio", L"The ratio of the new sampling rate to the cut-off, from 2 on."),
        Interpolation(), FirstSlope(), LastSlope()}}};
  table[L"smoothFilter"] = {
      {L"smoothFilter(S, points)",
       L"Moving average of each sample and its neighbours. At the ends it takes those that are "
       L"there.",
       {S(L"The signal."), Number(L"points",
                                  L"The number of neighbours on either side, from 1 to half the "
                                  L"samples.")}}};
}

}  // namespace corvath::calculator
