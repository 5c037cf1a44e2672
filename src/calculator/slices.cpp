#include "calculator/evaluator.h"
#include "foundation/math_exception.h"

#include <boost/numeric/conversion/cast.hpp>

#include <cmath>
#include <cstdint>
#include <optional>

// The parts of values that brackets behind an operand take.
namespace corvath::calculator {

namespace {

bool HasTable(const math::Value& value) {
  return value.IsMatrix() || value.HasTimeline();
}

std::int64_t ToPosition(const math::Value& value) {
  if (value.IsBoolean()) return value.GetBoolean() ? 1 : 0;
  const double number = value.GetScalar().real();
  if (std::isnan(number)) throw boost::numeric::bad_numeric_cast();
  return boost::numeric_cast<std::int64_t>(number);
}

}  // namespace

void Evaluator::EvaluateIndex(const ParsedText& text, Index node, Value& result) {
  const std::size_t n = text.NumChildren(node);  // operand, and at least one of i "," j
  const auto is_comma = [&](std::size_t child) {
    return text.GetText(text.Child(node, child)) == L",";
  };
  const auto need_table = [&](const Value& operand, const wchar_t* part) {
    if (!HasTable(operand))
      Raise(text, node, std::wstring(part) + L" extraction not supported by this type");
  };
  Value operand;
  Evaluate(text, text.Child(node, 0), operand);
  if (is_comma(1)) {
    if (n < 3) Raise(text, node, L"No index given");
    need_table(operand, L"Column");
    Value j;
    Evaluate(text, text.Child(node, 2), j);
    result = operand.GetColumn(j);
    return;
  }
  Value i;
  Evaluate(text, text.Child(node, 1), i);
  if (n == 2) {
    if (operand.IsMatrix()) Raise(text, node, L"Index extraction not supported by this type");
    result = operand[i];
  } else if (!is_comma(2)) {
    result = Value();  // o[(1)(2)]
  } else if (n == 3) {
    need_table(operand, L"Row");
    result = operand.GetRow(i);
  } else {
    need_table(operand, L"Cell");
    Value j;
    Evaluate(text, text.Child(node, 3), j);
    result = operand(i, j);
  }
}

/// v[start:end:step], half open; negative positions count from the end.
void Evaluator::EvaluateSlice(const ParsedText& text, Index node, Value& result) {
  Value operand;
  Evaluate(text, text.Child(node, 0), operand);
  if (!operand.IsVector()) Raise(text, node, L"Slice operations supported on vectors only");

  std::optional<std::int64_t> slots[3];  // start, end, step
  std::size_t slot = 0;
  for (std::size_t i = 1; i < text.NumChildren(node); ++i) {
    const Index child = text.Child(node, i);
    if (text.GetText(child) == L":") {
      ++slot;
      continue;
    }
    Value value;
    Evaluate(text, child, value);
    if (!value.IsScalar() && !value.IsBoolean())
      Raise(text, node, L"Item number used in slice definitions must be SCALAR or BOOLEAN");
    slots[slot] = ToPosition(value);
  }

  const Value::Vector& vector = operand.GetVector();
  const auto n = static_cast<std::int64_t>(vector.size());
  std::int64_t start = slots[0].value_or(0);
  std::int64_t end = slots[1].value_or(n);
  const std::int64_t step = slots[2].value_or(1);
  if (start < -n || start > n) Raise(text, node, L"Start index out of bounds");
  if (start < 0) start += n;
  if (end < -n || end > n) Raise(text, node, L"End index out of bounds");
  if (end < 0) end += n;
  if (end < start) Raise(text, node, L"Negative range specified");
  if (step == 0) Raise(text, node, L"Slice step cannot be zero");

  // The k-th entry counts from the front, or with a negative step from the back. Unsigned, the
  // smallest step has a magnitude too.
  const auto distance = step > 0 ? static_cast<std::uint64_t>(step)
                                 : std::uint64_t{0} - static_cast<std::uint64_t>(step);
  const auto range = static_cast<std::uint64_t>(end - start);
  const std::uint64_t count = range == 0 ? 0 : (range - 1) / distance + 1;
  Value::Vector slice(count);
  for (std::uint64_t k = 0; k < count; ++k) {
    const std::uint64_t position = static_cast<std::uint64_t>(start) + k * distance;
    slice(k) = vector(step > 0 ? position : static_cast<std::uint64_t>(n) - 1 - position);
  }
  result = Value(std::move(slice));
}

}  // namespace corvath::calculator
