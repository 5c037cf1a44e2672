#include "calculator/functions/function_adaptors.h"
#include "calculator/functions/groups.h"
#include "calculator/functions/help_records.h"
#include "variant/operators/elementwise.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

// Questions to values.
namespace corvath::calculator {

namespace {

using namespace help;
namespace fn = math::functions;
using math::Value;

void Size(FunctionCall& call, Value& result) {
  Value storage;
  const Value& x = call.Borrow(0, storage);
  if (!x.IsBoolean() && !x.IsScalar() && !x.IsVector())
    call.Raise(L"Wrong argument type. One-dimensional data type expected.");
  result = Value(static_cast<double>(x.Size()));
}

template <std::size_t (Value::*Of)() const>
void SizeOf(FunctionCall& call, Value& result) {
  Value storage;
  result = Value(static_cast<double>((call.Borrow(0, storage).*Of)()));
}

/// Whether the value answers yes.
template <bool (Value::*Of)() const noexcept>
void Is(FunctionCall& call, Value& result) {
  Value storage;
  result = Value((call.Borrow(0, storage).*Of)());
}

void IsInitialized(FunctionCall& call, Value& result) {
  Value storage;
  result = Value(!call.Borrow(0, storage).IsUninitialized());
}

/// Whether a number in the value has a property: real or imaginary part, data or timeline.
template <class Property>
bool AnyNumber(const Value& x, Property property) {
  const auto of_parts = [&](const Value::Complex& z) {
    return property(z.real()) || property(z.imag());
  };
  const auto of_range = [&](const auto& range) {
    return std::any_of(range.data().begin(), range.data().end(), of_parts);
  };
  if (x.IsScalar()) return of_parts(x.GetScalar());
  if (x.IsVector()) return of_range(x.GetVector());
  if (x.IsMatrix()) return of_range(x.GetMatrix());
  return x.HasTimeline() && (of_range(x.GetVector()) || of_range(x.GetMatrix()));
}

bool IsNaN(double x) {
  return std::isnan(x);
}

bool IsInfinite(double x) {
  return std::isinf(x);
}

/// Neither zero, subnormal, infinite nor NaN.
bool IsNormal(double x) {
  return std::isnormal(x);
}

bool IsNotFinite(double x) {
  return !std::isfinite(x);
}

template <bool (*Property)(double), bool Answer>
void HasNumber(FunctionCall& call, Value& result) {
  Value storage;
  result = Value(AnyNumber(call.Borrow(0, storage), Property) == Answer);
}

}  // namespace

void AddQueryFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kQueries, {L"size"}, {1}, Size);
  table.Add(Group::kQueries, {L"size1"}, {1}, SizeOf<&Value::Size1>);
  table.Add(Group::kQueries, {L"size2"}, {1}, SizeOf<&Value::Size2>);
  table.Add(Group::kQueries, {L"isnan"}, {1}, HasNumber<IsNaN, true>);
  table.Add(Group::kQueries, {L"isinf"}, {1}, HasNumber<IsInfinite, true>);
  table.Add(Group::kQueries, {L"isfinite"}, {1}, HasNumber<IsNotFinite, false>);
  table.Add(Group::kQueries, {L"isnormal"}, {1}, HasNumber<IsNormal, true>);
  table.Add(Group::kQueries, {L"isinitialized"}, {1}, IsInitialized);
  table.Add(Group::kQueries, {L"isscalar"}, {1}, Is<&Value::IsScalar>);
  table.Add(Group::kQueries, {L"iscomplex"}, {1}, Is<&Value::IsComplex>);
  table.Add(Group::kQueries, {L"ismatrix"}, {1}, Is<&Value::IsMatrix>);
  table.Add(Group::kQueries, {L"isvector"}, {1}, Is<&Value::IsVector>);
  table.Add(Group::kQueries, {L"isbool"}, {1}, Is<&Value::IsBoolean>);
  table.Add(Group::kQueries, {L"isxydata"}, {1}, Is<&Value::IsXYData>);
  table.Add(Group::kQueries, {L"issignal"}, {1}, Is<&Value::IsSignal>);
  table.Add(Group::kQueries, {L"inf2nan"}, {1}, Unary<fn::inf2nan>);
}

void AddQueryHelp(HelpTable& table) {
  table[L"size"] = {
      {L"size(x)", L"Number of elements.", {X(L"The elements.", L"boolean, scalar, vector")}}};
  table[L"size1"] = {
      {L"size1(x)", L"Number of rows or channels; length of a vector.", {X(L"The value.")}}};
  table[L"size2"] = {{L"size2(x)", L"Number of columns or samples.", {X(L"The value.")}}};
  AddEach(table, L"inf2nan", L"The number itself, or NaN where it is infinite,");
  const auto add = [&](const std::wstring& name, const std::wstring& text) {
    table[name] = {{name + L"(x)",
                    text,
                    {{L"x", kNumbers, std::wstring(L"boolean, ") + kAll, false, L"The value."}}}};
  };
  const std::wstring looked_at =
      L" Real and imaginary parts count, of a signal those of the abscissa too.";
  add(L"isnan", L"Whether a number of x is NaN." + looked_at);
  add(L"isinf", L"Whether a number of x is infinite." + looked_at);
  add(L"isfinite", L"Whether no number of x is NaN or infinite." + looked_at);
  add(L"isnormal", L"Whether a number of x is neither 0, subnormal, infinite nor NaN." + looked_at);
  add(L"isinitialized", L"Whether x has a value at all.");
  add(L"isscalar", L"Whether x is a scalar.");
  add(L"iscomplex", L"Whether x holds a number that is not real.");
  add(L"ismatrix", L"Whether x is a matrix.");
  add(L"isvector", L"Whether x is a vector.");
  add(L"isbool", L"Whether x is a truth value.");
  add(L"isxydata", L"Whether x is xy-data.");
  add(L"issignal", L"Whether x is a signal; xy-data are none.");
}

}  // namespace corvath::calculator
