#include "variant/value/constructors.h"

#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

// Functions that put values together.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

double TruthNumber(const Value& boolean) {
  return boolean.GetBoolean() ? 1.0 : 0.0;
}

void Vector(FunctionCall& call, Value& result) {
  std::size_t size = 0;
  const std::vector<Value> parts = call.EvaluateAll([&](const Value& part) {
    if (!part.IsBoolean() && !part.IsScalar() && !part.IsVector())
      call.Raise(L"Wrong input type - SCALAR or VECTOR expected");
    size += part.Size();
  });
  Value::Vector vector(size);
  auto out = vector.begin();
  for (const Value& part : parts) {
    if (part.IsVector())
      out = std::copy(part.GetVector().begin(), part.GetVector().end(), out);
    else
      *out++ = part.IsScalar() ? part.GetScalar() : Value::Complex(TruthNumber(part));
  }
  result = Value(std::move(vector));
}

/// Columns of the rows that a value gives.
std::size_t Columns(const Value& part) {
  return part.IsVector() ? part.Size() : part.IsMatrix() ? part.Size2() : 1;
}

void Matrix(FunctionCall& call, Value& result) {
  std::size_t columns = 0;
  std::size_t rows = 0;
  const auto irregular = [&](const wchar_t* before, const wchar_t* behind) {
    call.Raise(L"Irregular size of input object. " + std::wstring(before) + L"'" +
               std::to_wstring(columns) + L"' " + behind);
  };
  const std::vector<Value> parts = call.EvaluateAll([&](const Value& part) {
    if (!part.IsBoolean() && !part.IsScalar() && !part.IsVector() && !part.IsMatrix())
      call.Raise(L"Wrong input type - BOOLEAN, SCALAR, VECTOR or MATRIX expected");
    if (rows == 0) columns = Columns(part);
    if (Columns(part) != columns) {
      if (part.IsMatrix()) irregular(L"", L"columns expected.");
      if (part.IsVector()) irregular(L"Vector size of ", L"expected.");
      irregular(L"Size of ", L"expected.");
    }
    rows += part.IsMatrix() ? part.Size1() : 1;
  });
  Value::Matrix matrix(rows, columns);
  auto out = matrix.data().begin();  // row by row
  for (const Value& part : parts) {
    if (part.IsMatrix())
      out = std::copy(part.GetMatrix().data().begin(), part.GetMatrix().data().end(), out);
    else if (part.IsVector())
      out = std::copy(part.GetVector().begin(), part.GetVector().end(), out);
    else
      *out++ = part.IsScalar() ? part.GetScalar() : Value::Complex(TruthNumber(part));
  }
  result = Value(std::move(matrix));
}

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

}  // namespace

void AddConstructorFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kConstructors, {L"vec", L"vector"}, {Function::kAnyCount}, Vector);
  table.Add(Group::kConstructors, {L"mat", L"matrix"}, {Function::kAnyCount}, Matrix);
  table.Add(Group::kConstructors, {L"signal", L"series"}, {Function::kAnyCount}, Signal);
  table.Add(Group::kConstructors, {L"xydata"}, {1, 2}, XYData);
  table.Add(Group::kConstructors, {L"linspace"}, {3}, Linspace);
}

void AddConstructorHelp(HelpTable& table) {
  table[L"vector"] = {{L"vector(x<sub>1</sub>, ..., x<sub>n</sub>)",
                       L"All numbers in one vector.",
                       {X(L"The parts.", L"boolean, scalar, vector")}}};
  table[L"matrix"] = {{L"matrix(x<sub>1</sub>, ..., x<sub>n</sub>)",
                       L"The arguments as rows of one matrix.",
                       {X(L"The rows.", L"boolean, scalar, vector, matrix")}}};
  table[L"signal"] = {{L"signal(v, x<sub>0</sub>, ..., x<sub>n</sub>)",
                       L"Signal over an abscissa, or more channels for a signal.",
                       {{L"v", kReal, L"vector, signal", false, L"The abscissa, or a signal."},
                        X(L"The channels.", L"vector, signal")}}};
  table[L"xydata"] = {{L"xydata(x, y)",
                       L"Curve of points (x, y).",
                       {X(L"The abscissae.", L"vector", kReal),
                        {L"y", kNumbers, L"vector", false, L"The ordinates."}}},
                      {L"xydata(x)",
                       L"Curve from a matrix of two rows or a signal of one channel.",
                       {X(L"The points.", L"matrix, signal, xy-data")}}};
  table[L"linspace"] = {{L"linspace(a, b, n)",
                         L"Equidistant numbers.",
                         {{L"a", kReal, L"scalar", false, L"The first one."},
                          {L"b", kReal, L"scalar", false, L"The last one."},
                          {L"n", kReal, L"scalar", false, L"Their number."}}}};
  AddSecondName(table, L"vec", L"vector");
  AddSecondName(table, L"mat", L"matrix");
  AddSecondName(table, L"series", L"signal");
}

}  // namespace corvath::calculator
