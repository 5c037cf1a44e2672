#include "variant/functions/linear_algebra.h"

#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "variant/functions/reductions.h"
#include "variant/operators/binary_functions.h"

#include <cstdint>

// Linear algebra.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

/// A function of one matrix that takes cubic time.
template <void (*Of)(Value&, const Value&)>
void Factorised(FunctionCall& call, Value& result) {
  Value storage;
  const Value& x = call.Borrow(0, storage);
  if (x.IsMatrix()) call.CountMultiplications(std::uint64_t{x.Size()} * x.Size1());
  Of(result, x);
}

std::uint64_t ProductWork(const Value& a, const Value& b) {
  return std::uint64_t{a.Size()} * (b.IsMatrix() ? b.Size2() : 1);
}

}  // namespace

void AddLinearAlgebraFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  AddUnary(table, Group::kLinearAlgebra,
           {
               {L"transpose", Unary<fn::transpose>},
               {L"invert", Factorised<fn::invert>},
               {L"euklidnorm", Unary<fn::euklidnorm>},
               {L"lufactorize", Factorised<fn::lufactorize>},
           });
  table.Add(Group::kLinearAlgebra, {L"innerprod"}, {2}, Binary<fn::innerprod>);
  table.Add(Group::kLinearAlgebra, {L"outerprod"}, {2}, Binary<fn::outerprod>);
  table.Add(Group::kLinearAlgebra, {L"matrixmult"}, {2}, OfMatrices<fn::matrixmult, ProductWork>);
  table.Add(Group::kLinearAlgebra, {L"times"}, {2}, Binary<fn::times>);
}

void AddLinearAlgebraHelp(HelpTable& table) {
  const auto of_matrix = [&](const wchar_t* name, const wchar_t* text, const wchar_t* types) {
    table[name] = {
        {std::wstring(name) + L"(A)", text, {{L"A", kNumbers, types, false, L"The matrix."}}}};
  };
  of_matrix(L"transpose", L"Rows and columns exchanged, without conjugation.", L"matrix");
  of_matrix(L"invert", L"Inverse of a square matrix, 1/x of each number of a vector or scalar.",
            L"boolean, scalar, vector, matrix");
  of_matrix(L"lufactorize",
            L"Triangular factors without pivoting. The result is U, and below the diagonal L "
            L"without its unit "
            L"diagonal.",
            L"matrix");
  table[L"euklidnorm"] = {
      {L"euklidnorm(x)", L"Euclidean norm of all numbers.", {X(L"The numbers.")}}};
  const auto of_two = [&](const wchar_t* name, const wchar_t* text, const wchar_t* types) {
    table[name] = {
        {std::wstring(name) + L"(x, y)",
         text,
         {X(L"The first factor.", types), {L"y", kNumbers, types, false, L"The second one."}}}};
  };
  of_two(L"innerprod", L"Sum of the products, without conjugation.", L"vector");
  of_two(L"outerprod", L"Matrix of all products.", L"vector");
  of_two(L"matrixmult", L"Matrix product.", L"vector, matrix");
  of_two(L"times", L"Product number by number.", kAll);
}

}  // namespace corvath::calculator
