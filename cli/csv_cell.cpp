#include "csv_cell.h"

#include "foundation/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace cli {
namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool HasDecimalComma(std::string_view cell) {
  return cell.find(',') != std::string_view::npos &&
         std::any_of(cell.begin(), cell.end(), IsDigit) &&
         cell.find_first_not_of("0123456789+-.,eE ") == std::string_view::npos;
}

}  // namespace

CsvNumber ReadNumber(std::string_view cell) {
  using Kind = CsvNumber::Kind;
  const std::size_t first = cell.find_first_not_of(" \t");  // within quotes they stay
  if (first == std::string_view::npos) return {Kind::kEmpty, 0.0};
  cell = cell.substr(first, cell.find_last_not_of(" \t") + 1 - first);
  std::string_view digits = cell;
  if (digits.front() == '+') digits.remove_prefix(1);  // from_chars knows no plus sign
  const char* const end = digits.data() + digits.size();
  double value = 0.0;
  const auto result = std::from_chars(digits.data(), end, value);
  if (result.ptr == end && !digits.empty() && !(cell.front() == '+' && digits.front() == '-')) {
    if (result.ec == std::errc()) return {Kind::kNumber, value};
    // from_chars does not say on which side a number is out of range.
    value = std::strtod(std::string(digits).c_str(), nullptr);
    if (std::abs(value) < 1.0) return {Kind::kNumber, value};
    return {Kind::kOutOfRange, 0.0};
  }
  return {HasDecimalComma(cell) ? Kind::kDecimalComma : Kind::kText, 0.0};
}

std::string RefusalText(std::string_view cell, CsvNumber::Kind kind) {
  switch (kind) {
    case CsvNumber::Kind::kEmpty:
      return "empty, not a number";
    case CsvNumber::Kind::kOutOfRange:
      return Quoted(cell) + " is beyond the range of doubles";
    case CsvNumber::Kind::kDecimalComma:
      return Quoted(cell) +
             " is not a number; write a point for a decimal comma, and nothing "
             "between thousands";
    default:
      return Quoted(cell) + " is not a number";
  }
}

std::string Quoted(std::string_view text) {
  constexpr std::size_t kMaxLength = 60;
  constexpr std::size_t kMaxBytes = 8 * kMaxLength;
  std::wstring wide = corvath::utils::FromUtf8(text.substr(0, kMaxBytes));
  const bool is_cut = wide.size() > kMaxLength;
  if (is_cut) wide.resize(kMaxLength);
  std::replace_if(
      wide.begin(), wide.end(),
      [](wchar_t c) { return c < L' ' || (c >= L'\x7f' && c < L'\xa0') || c == L'\xfffd'; }, L'?');
  return '"' + corvath::utils::ToUtf8(wide) + (is_cut ? "...\"" : "\"");
}

}  // namespace cli
