#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "variant/functions/reductions.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_parts.h"
#include "variant/value/random_values.h"

#include <vector>

// Elementary functions, number by number.
namespace corvath::calculator {

namespace {

using namespace help;
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

void Rand(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  const int distribution = call.Integer(1);
  fn::rand(result, x, distribution, call.Evaluate(2), call.GetGenerator());
}

}  // namespace

void AddElementaryFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  AddUnary(table, Group::kElementary,
           {
               {L"sin", Unary<fn::sin>},         {L"cos", Unary<fn::cos>},
               {L"tan", Unary<fn::tan>},         {L"asin", Unary<fn::asin>},
               {L"acos", Unary<fn::acos>},       {L"atan", Unary<fn::atan>},
               {L"sinh", Unary<fn::sinh>},       {L"cosh", Unary<fn::cosh>},
               {L"tanh", Unary<fn::tanh>},       {L"asinh", Unary<fn::asinh>},
               {L"acosh", Unary<fn::acosh>},     {L"atanh", Unary<fn::atanh>},
               {L"deg2rad", Unary<fn::deg2rad>}, {L"rad2deg", Unary<fn::rad2deg>},
               {L"log", Unary<fn::log>},         {L"ln", Unary<fn::ln>},
               {L"exp", Unary<fn::exp>},         {L"sqrt", Unary<fn::sqrt>},
               {L"sgn", Unary<fn::sgn>},         {L"ceil", Unary<fn::ceil>},
               {L"floor", Unary<fn::floor>},
           });
  table.Add(Group::kElementary, {L"atan2"}, {1, 2}, Atan2);
  table.Add(Group::kElementary, {L"mod"}, {2}, Binary<fn::mod>);
  table.Add(Group::kElementary, {L"round"}, {1, 2}, Round);
  table.Add(Group::kElementary, {L"min"}, {Function::kAnyCount}, Extreme<fn::min>);
  table.Add(Group::kElementary, {L"max"}, {Function::kAnyCount}, Extreme<fn::max>);
  table.Add(Group::kElementary, {L"rand"}, {3}, Rand);
}

void AddElementaryHelp(HelpTable& table) {
  AddEach(table, L"sin", L"Sine");
  AddEach(table, L"cos", L"Cosine");
  AddEach(table, L"tan", L"Tangent");
  AddEach(table, L"asin", L"Inverse sine");
  AddEach(table, L"acos", L"Inverse cosine");
  AddEach(table, L"atan", L"Inverse tangent");
  AddEach(table, L"sinh", L"Hyperbolic sine");
  AddEach(table, L"cosh", L"Hyperbolic cosine");
  AddEach(table, L"tanh", L"Hyperbolic tangent");
  AddEach(table, L"asinh", L"Inverse hyperbolic sine");
  AddEach(table, L"acosh", L"Inverse hyperbolic cosine");
  AddEach(table, L"atanh", L"Inverse hyperbolic tangent");
  AddEach(table, L"deg2rad", L"Radians of the degrees");
  AddEach(table, L"rad2deg", L"Degrees of the radians");
  AddEach(table, L"log", L"Logarithm to base 10");
  AddEach(table, L"ln", L"Natural logarithm");
  AddEach(table, L"exp", L"Exponential e<sup>x</sup>");
  AddEach(table, L"sqrt", L"Square root, principal branch,");
  AddEach(table, L"ceil", L"Next integer above real and imaginary part");
  AddEach(table, L"floor", L"Next integer below real and imaginary part");
  table[L"sgn"] = {{L"sgn(x)",
                    L"Sign of a number: 1, -1 or 0; of a complex one x/|x|.",
                    {X(L"The number.", L"scalar")}}};
  table[L"atan2"] = {
      {L"atan2(y, x)",
       L"Angle of the points (x, y).",
       {{L"y", kReal, L"scalar, vector, matrix", false, L"The ordinates."},
        {L"x", kReal, L"scalar, vector, matrix", false, L"The abscissae, of the same size."}}},
      {L"atan2(x)",
       L"Angle of a complex number, or of the points of a signal.",
       {X(L"The number or the signal.", L"scalar, signal, xy-data")}}};
  table[L"mod"] = {
      {L"mod(x, y)",
       L"Remainder x - y floor(x/y).",
       {X(L"The dividend."),
        {L"y", kNumbers, kAll, false, L"The divisor: a scalar, or of the kind of x."}}}};
  table[L"round"] = {
      {L"round(x [, d])",
       L"Rounds real and imaginary parts; halves go away from zero.",
       {X(L"The numbers."),
        {L"d", kReal, L"scalar", true,
         L"The number of decimal places, which may be negative (default value is 0)."}}}};
  table[L"min"] = {
      {L"min(x)",
       L"Smallest number. For each channel of a signal its abscissa and value, for xy-data this "
       L"pair.",
       {X(L"The numbers.", kAll, kReal)}},
      {L"min(x<sub>1</sub>, ..., x<sub>n</sub>)",
       L"Smallest of the numbers.",
       {X(L"The numbers.", L"scalar", kReal)}}};
  table[L"rand"] = {
      {L"rand(x, dt, p)",
       L"Random numbers in the shape of x.",
       {X(L"Gives kind and size of the result."),
        {L"dt", kReal, L"UNIFORM, NORMAL, LOGNORMAL, TRIANGLE, CAUCHY, EXPONENTIAL", false,
         L"The distribution."},
        {L"p", kReal, L"vector", false,
         L"Its parameters: lower and upper end; mean and standard deviation (of the logarithm for "
         L"LOGNORMAL); lower end, mode and upper end; median and scale; rate."}}}};
  AddSecondName(table, L"max", L"min");
  for (FunctionHelp& record : table[L"max"]) record.text.replace(0, 8, L"Largest");  // "Smallest"
}

}  // namespace corvath::calculator
