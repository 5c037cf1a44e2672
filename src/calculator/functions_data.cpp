#include "calculator/function_adaptors.h"
#include "calculator/function_call.h"
#include "calculator/function_table.h"
#include "calculator/number_table.h"
#include "foundation/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <complex>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

// Functions that put values together, read them, and ask what they are.
namespace corvath::calculator {

namespace {

using math::Value;

double ToNumber(const Value& boolean) {
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
      *out++ = part.IsScalar() ? part.GetScalar() : Value::Complex(ToNumber(part));
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
      *out++ = part.IsScalar() ? part.GetScalar() : Value::Complex(ToNumber(part));
  }
  result = Value(std::move(matrix));
}

std::wstring QuotedString(const FunctionCall& call, std::size_t i) {
  if (!call.IsString(i)) call.Raise(L"Wrong argument type. Quoted string expected.");
  return call.GetString(i);
}

void Calculate(FunctionCall& call, Value& result) {
  result = ParseNumberTable(utils::ToUtf8(QuotedString(call, 0)), 0);
}

/// The count of lines that an argument gives in quotes.
std::uint64_t SkippedLines(const FunctionCall& call, std::size_t i) {
  const std::string digits = utils::ToUtf8(QuotedString(call, i));
  const char* const end = digits.data() + digits.size();
  std::uint64_t count = 0;
  const auto [last, error] = std::from_chars(digits.data(), end, count);
  if (error != std::errc() || last != end) call.Raise(L"Unsigned integer constant expected");
  return count;
}

void Read(FunctionCall& call, Value& result) {
  const std::filesystem::path path(utils::ToUtf8(QuotedString(call, 0)));
  try {
    const std::filesystem::file_status status = std::filesystem::status(path);
    if (!std::filesystem::exists(status)) call.Raise(L"The given file doesn't seem to exist.");
    if (!std::filesystem::is_regular_file(status))
      call.Raise(L"The given path doesn't seem to be a regular file.");
    const std::uint64_t skipped = call.Count() > 1 ? SkippedLines(call, 1) : 0;
    result = ReadNumberTable(path, skipped);
  } catch (const std::filesystem::filesystem_error& error) {
    call.Raise(utils::FromUtf8(error.what()));
  }
}

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

void AddDataFunctions(FunctionTable& table) {
  using Group = FunctionGroup;
  table.Add(Group::kConstructors, {L"vec", L"vector"}, {Function::kAnyCount}, Vector);
  table.Add(Group::kConstructors, {L"mat", L"matrix"}, {Function::kAnyCount}, Matrix);
  table.Add(Group::kData, {L"read"}, {1, 2}, Read);
  table.Add(Group::kData, {L"calculate"}, {1}, Calculate);
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
}

}  // namespace corvath::calculator
