#include "variant/signals/modal.h"

#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"

#include <cstdint>

// Modal comparison.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

/// For each pair of columns.
std::uint64_t ColumnWork(const Value& a, const Value& b) {
  return std::uint64_t{a.Size()} * b.Size2();
}

/// For each pair of rows.
std::uint64_t RowWork(const Value& a, const Value& b) {
  return std::uint64_t{a.Size()} * b.Size1();
}

void ModePairs(FunctionCall& call, Value& result) {
  const Value a = call.Evaluate(0);
  const Value b = call.Evaluate(1);
  const Value limit = call.Evaluate(2);
  if (a.IsMatrix() && b.IsMatrix()) call.CountMultiplications(ColumnWork(a, b));
  fn::modepairs(result, a, b, limit);
}

}  // namespace

void AddModalFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kModal, {L"mac"}, {2}, OfMatrices<fn::mac, ColumnWork>);
  table.Add(Group::kModal, {L"comac"}, {2}, OfMatrices<fn::comac, RowWork>);
  table.Add(Group::kModal, {L"sdi"}, {2}, OfMatrices<fn::sdi, ColumnWork>);
  table.Add(Group::kModal, {L"modepairs"}, {3}, ModePairs);
}

void AddModalHelp(HelpTable& table) {
  const auto modes = [](const wchar_t* name, const wchar_t* description) {
    return ArgumentHelp{name, kNumbers, L"matrix", false, description};
  };
  const ArgumentHelp a = modes(L"A", L"Modal vectors, one in each column.");
  const ArgumentHelp b = modes(L"B", L"The modal vectors to compare with, with as many rows.");
  table[L"mac"] = {
      {L"mac(A, B)",
       L"Modal assurance criterion of the columns. It is 1 for parallel vectors of any complex "
       L"scale, 0 for orthogonal ones.<br>|a<sup>H</sup>b|<sup>2</sup> / "
       L"(|a|<sup>2</sup>|b|<sup>2</sup>) "
       L"for column a of A in the rows, b of B in the columns of the result.",
       {a, b}}};
  table[L"comac"] = {
      {L"comac(A, B)",
       L"Modal assurance criterion of the rows, one for each pair of degrees of freedom.",
       {a, modes(L"B", L"The modal vectors to compare with, of the same size.")}}};
  table[L"sdi"] = {
      {L"sdi(A, B)",
       L"Signature difference indicator of the columns. It sees their scale too and is 1 for equal "
       L"vectors.<br>4 (Re a<sup>H</sup>b / (|a|<sup>2</sup> + |b|<sup>2</sup>))<sup>2</sup> for "
       L"column a of A in the rows, b of B in the columns of the result.",
       {a, b}}};
  table[L"modepairs"] = {
      {L"modepairs(A, B, r)",
       L"Index of the column of A that each column of B pairs with. It is the one of the highest "
       L"mac, if that is above r; else NaN.",
       {a, b, Number(L"r", L"The limit, which mac must exceed.")}}};
}

}  // namespace corvath::calculator
