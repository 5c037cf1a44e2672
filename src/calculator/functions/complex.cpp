#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "variant/functions/reductions.h"
#include "variant/value/complex_parts.h"

// Complex numbers and their parts.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

void Norm(FunctionCall& call, Value& result) {
  const Value x = call.Evaluate(0);
  if (call.Count() == 1)
    fn::norm(result, x);
  else
    fn::norm(result, x, call.Unsigned(1));
}

}  // namespace

void AddComplexFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  AddUnary(table, Group::kComplex,
           {
               {L"conj", Unary<fn::conj>},
               {L"abs", Unary<fn::abs>},
               {L"arg", Unary<fn::arg>},
               {L"real", Unary<fn::real>},
               {L"imag", Unary<fn::imag>},
               {L"pol2cart", Unary<fn::pol2cart>},
               {L"cart2pol", Unary<fn::cart2pol>},
           });
  table.Add(Group::kComplex, {L"cplx"}, {2}, Binary<fn::cplx>);
  table.Add(Group::kComplex, {L"norm"}, {1, 2}, Norm);
}

void AddComplexHelp(HelpTable& table) {
  AddEach(table, L"conj", L"Conjugate");
  AddEach(table, L"abs", L"Magnitude");
  AddEach(table, L"arg", L"Phase, in radians,");
  AddEach(table, L"real", L"Real part");
  AddEach(table, L"imag", L"Imaginary part");
  table[L"cplx"] = {{L"cplx(a, b)",
                     L"Complex numbers a + b i.",
                     {{L"a", kReal, kAll, false, L"The real parts."},
                      {L"b", kReal, kAll, false, L"The imaginary parts, of the same kind."}}}};
  table[L"cart2pol"] = {{L"cart2pol(x)",
                         L"Magnitude and phase. A scalar gives a vector of both, a vector a matrix "
                         L"of two rows, other values two rows for each row.",
                         {X(L"The numbers.")}}};
  table[L"pol2cart"] = {
      {L"pol2cart(x)",
       L"Complex numbers of magnitude and phase. They follow each other in a vector, "
       L"or are the rows 2k and 2k+1.",
       {X(L"Magnitudes and phases.", L"vector, matrix, signal", kReal)}}};
  table[L"norm"] = {
      {L"norm(x)", L"Square of the magnitude of each number of x.", {X(L"The numbers.")}},
      {L"norm(x, n)",
       L"n-th norm of all numbers: (sum |x<sub>i</sub>|<sup>n</sup>)<sup>1/n</sup>.",
       {X(L"The numbers."), {L"n", kReal, L"scalar", false, L"The power."}}}};
}

}  // namespace corvath::calculator
