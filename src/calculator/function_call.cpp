#include "calculator/function_call.h"

#include "foundation/math_exception.h"

#include <boost/numeric/conversion/cast.hpp>

#include <cmath>

namespace corvath::calculator {

namespace {

/// "1st", "2nd", "3rd", "4th" ... for positions from 0; functions have less than 21 arguments.
std::wstring Ordinal(std::size_t i) {
  static const wchar_t* const kSuffixes[] = {L"st", L"nd", L"rd"};
  return std::to_wstring(i + 1) + (i < 3 ? kSuffixes[i] : L"th");
}

}  // namespace

math::Value FunctionCall::Evaluate(std::size_t i) {
  math::Value value;
  Evaluate(i, value);
  return value;
}

void FunctionCall::Evaluate(std::size_t i, math::Value& result) {
  evaluator_.Evaluate(text_, text_.Child(node_, i), result);
}

const math::Value& FunctionCall::Borrow(std::size_t i, math::Value& storage) {
  return evaluator_.Borrow(text_, text_.Child(node_, i), storage);
}

double FunctionCall::Real(std::size_t i) {
  const math::Value value = Evaluate(i);
  if (!value.IsScalar() || value.IsComplex()) RaiseWrongArgument(i);
  return value.GetScalar().real();
}

int FunctionCall::Integer(std::size_t i) {
  const double value = Real(i);
  if (std::isnan(value)) throw boost::numeric::bad_numeric_cast();
  return boost::numeric_cast<std::int32_t>(std::nearbyint(value));
}

std::uint64_t FunctionCall::Unsigned(std::size_t i) {
  const double value = Real(i);
  if (std::isnan(value)) throw boost::numeric::bad_numeric_cast();
  return boost::numeric_cast<std::uint64_t>(value);
}

bool FunctionCall::Boolean(std::size_t i) {
  const math::Value value = Evaluate(i);
  if (!value.IsBoolean()) RaiseWrongArgument(i);
  return value.GetBoolean();
}

bool FunctionCall::IsString(std::size_t i) const {
  return text_.GetRule(text_.Child(node_, i)) == Rule::kString;
}

std::wstring FunctionCall::GetString(std::size_t i) const {
  return std::wstring(text_.GetText(text_.Child(text_.Child(node_, i), 0)));
}

void FunctionCall::Raise(const std::wstring& message) const {
  Evaluator::Raise(text_, node_, message);
}

void FunctionCall::RaiseWrongArgument(std::size_t i) const {
  Raise(Ordinal(i) + L" argument wrong in function " + GetName());
}

void FunctionCall::RaiseWrongCount() const {
  Raise(L"Wrong number of arguments provided to " + GetName());
}

}  // namespace corvath::calculator
