#include "calculator/function_adaptors.h"
#include "calculator/function_call.h"
#include "calculator/function_table.h"
#include "variant/filters.h"
#include "variant/fourier.h"

// Filters and Fourier transforms. The signal is evaluated into the result and worked on there: it
// may be large, and no copy of it is needed.
namespace corvath::calculator {

namespace {

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

template <void (*kTransform)(Value&, const Value&),
          void (*kResampling)(Value&, const Value&, int, double, double)>
void Transform(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  if (call.Count() == 1) return kTransform(result, result);
  const int interpolation = call.Integer(1);
  const double d0 = call.Real(2);
  kResampling(result, result, interpolation, d0, call.Real(3));
}

template <void (*kTransform)(Value&, const Value&)>
void InPlace(FunctionCall& call, Value& result) {
  call.Evaluate(0, result);
  kTransform(result, result);
}

}  // namespace

void AddFilterFunctions(FunctionTable& table) {
  constexpr FunctionGroup kFilters = FunctionGroup::kFilters;
  table.Add(kFilters, {L"butterworthFilter"}, {10}, FilterBy<fn::butterworthFilter>);
  table.Add(kFilters, {L"sineButterworthFilter"}, {10}, FilterBy<fn::sineButterworthFilter>);
  table.Add(kFilters, {L"besselFilter"}, {10}, FilterBy<fn::besselFilter>);
  table.Add(kFilters, {L"chebyOneFilter"}, {11}, RippleFilterBy<fn::chebyOneFilter>);
  table.Add(kFilters, {L"chebyTwoFilter"}, {11}, RippleFilterBy<fn::chebyTwoFilter>);
  table.Add(kFilters, {L"saeFilter"}, {8}, Sae);
  table.Add(kFilters, {L"decimateFilter"}, {6}, Decimate);
  table.Add(kFilters, {L"smoothFilter"}, {2}, Smooth);

  constexpr FunctionGroup kFourier = FunctionGroup::kFourier;
  table.Add(kFourier, {L"fft"}, {1, 4}, Transform<fn::fft, fn::fft>);
  table.Add(kFourier, {L"ifft"}, {1, 4}, Transform<fn::ifft, fn::ifft>);
  table.Add(kFourier, {L"fftshift"}, {1}, InPlace<fn::fftshift>);
  table.Add(kFourier, {L"ifftshift"}, {1}, InPlace<fn::ifftshift>);
  table.Add(kFourier, {L"fft2d"}, {1}, InPlace<fn::fft2d>);
  table.Add(kFourier, {L"ifft2d"}, {1}, InPlace<fn::ifft2d>);
}

}  // namespace corvath::calculator
