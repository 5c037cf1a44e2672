#include "calculator/function_adaptors.h"
#include "calculator/function_call.h"
#include "calculator/function_table.h"
#include "variant/binary_functions.h"
#include "variant/complex_parts.h"
#include "variant/elementwise.h"
#include "variant/linear_algebra.h"
#include "variant/random_values.h"
#include "variant/reductions.h"

// Mathematics of numbers: element by element, complex parts, statistics, linear algebra.
namespace corvath::calculator {

namespace {

namespace fn = math::functions;
using math::Value;

/// min and max: of one argument, or of a list of numbers.
template <void (*Of)(Value&, const std::vector<Value>&)>
void Extreme(FunctionCall& call, Value& result) {
  if (call.Count() == 0) call.RaiseWrongCount();
  Of(result, call.EvaluateAll());
}

void Round(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  fn::round(result, x, call.Count() == 1 ? 0 : call.Integer(1));
}

void Atan2(FunctionCall& call, Value& result) {
  const Value y = call.Evaluate(0);
  if (call.Count() == 1)
    fn::atan2(result, y);
  else
    fn::atan2(result, y, call.Evaluate(1));
}

void Norm(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  if (call.Count() == 1)
    fn::norm(result, x);
  else
    fn::norm(result, x, call.Unsigned(1));
}

void Rand(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  const int distribution = call.Integer(1);
  fn::rand(result, x, distribution, call.Evaluate(2), call.GetGenerator());
}

}  // namespace

void AddElementaryFunctions(FunctionTable& table) {
  const std::pair<const wchar_t*, void (*)(FunctionCall&, Value&)> of_one[] = {
      {L"sin", Unary<fn::sin>},
      {L"cos", Unary<fn::cos>},
      {L"tan", Unary<fn::tan>},
      {L"asin", Unary<fn::asin>},
      {L"acos", Unary<fn::acos>},
      {L"atan", Unary<fn::atan>},
      {L"sinh", Unary<fn::sinh>},
      {L"cosh", Unary<fn::cosh>},
      {L"tanh", Unary<fn::tanh>},
      {L"asinh", Unary<fn::asinh>},
      {L"acosh", Unary<fn::acosh>},
      {L"atanh", Unary<fn::atanh>},
      {L"deg2rad", Unary<fn::deg2rad>},
      {L"rad2deg", Unary<fn::rad2deg>},
      {L"log", Unary<fn::log>},
      {L"ln", Unary<fn::ln>},
      {L"exp", Unary<fn::exp>},
      {L"sqrt", Unary<fn::sqrt>},
      {L"sgn", Unary<fn::sgn>},
      {L"ceil", Unary<fn::ceil>},
      {L"floor", Unary<fn::floor>},
      {L"inf2nan", Unary<fn::inf2nan>},
      {L"conj", Unary<fn::conj>},
      {L"abs", Unary<fn::abs>},
      {L"arg", Unary<fn::arg>},
      {L"real", Unary<fn::real>},
      {L"imag", Unary<fn::imag>},
      {L"pol2cart", Unary<fn::pol2cart>},
      {L"cart2pol", Unary<fn::cart2pol>},
      {L"sum", Unary<fn::sum>},
      {L"mean", Unary<fn::mean>},
      {L"stddev", Unary<fn::stddev>},
      {L"transpose", Unary<fn::transpose>},
      {L"invert", Unary<fn::invert>},
      {L"euklidnorm", Unary<fn::euklidnorm>},
      {L"lufactorize", Unary<fn::lufactorize>},
  };
  for (const auto& [name, run] : of_one) table.Add({name}, {1}, run);

  table.Add({L"atan2"}, {1, 2}, Atan2);
  table.Add({L"mod"}, {2}, Binary<fn::mod>);
  table.Add({L"round"}, {1, 2}, Round);
  table.Add({L"min"}, {Function::kAnyCount}, Extreme<fn::min>);
  table.Add({L"max"}, {Function::kAnyCount}, Extreme<fn::max>);
  table.Add({L"rand"}, {3}, Rand);
  table.Add({L"cplx"}, {2}, Binary<fn::cplx>);
  table.Add({L"norm"}, {1, 2}, Norm);
  table.Add({L"innerprod"}, {2}, Binary<fn::innerprod>);
  table.Add({L"outerprod"}, {2}, Binary<fn::outerprod>);
  table.Add({L"matrixmult"}, {2}, Binary<fn::matrixmult>);
  table.Add({L"times"}, {2}, Binary<fn::times>);
}

}  // namespace corvath::calculator
