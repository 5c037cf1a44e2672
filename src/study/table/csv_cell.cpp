#include "study/table/csv_cell.h"

#include "foundation/text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace corvath::study {
namespace {

bool IsDecimalDigit(char c) {
  return c >= '0' && c <= '9';
}

bool HasDecimalComma(std::string_view cell) {
  return cell.find(',') != std::string_view::npos &&
         std::any_of(cell.begin(), cell.end(), IsDecimalDigit) &&
         cell.find_first_not_of("0123456789+-.,eE ") == std::string_view::npos;
}

}  // namespace

std::string_view Trimmed(std::string_view cell) {
  const std::size_t first = cell.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return cell.substr(first, cell.find_last_not_of(" \t") + 1 - first);
}

CsvNumber ReadNumber(std::string_view cell) {
  using Kind = CsvNumber::Kind;
  cell = Trimmed(cell);
  if (cell.empty()) return {Kind::kEmpty, 0.0};
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

bool MayBeThousands(std::string_view cell) {
  cell = Trimmed(cell);
  if (!cell.empty() && (cell.front() == '-' || cell.front() == '+')) cell.remove_prefix(1);
  const std::size_t comma = cell.find(',');
  return comma != std::string_view::npos && comma >= 1 && comma <= 3 && cell.front() != '0' &&
         cell.size() == comma + 4 &&
         std::all_of(cell.begin(), cell.begin() + comma, IsDecimalDigit) &&
         std::all_of(cell.begin() + comma + 1, cell.end(), IsDecimalDigit);
}

CsvNumber NumberFormat::Read(std::string_view cell) {
  using Kind = CsvNumber::Kind;
  CsvNumber number = ReadNumber(cell);
  if (decimal_ == Decimal::kPoint) return number;
  const bool has_point = cell.find('.') != std::string_view::npos;
  const bool is_number = number.kind == Kind::kNumber || number.kind == Kind::kOutOfRange;
  if (is_number && has_point) {
    if (decimal_ == Decimal::kComma) return {Kind::kDecimalPoint, 0.0};
    decimal_ = Decimal::kPoint;
  }
  if (number.kind != Kind::kDecimalComma) return number;
  if (has_point) return {Kind::kDecimalPoint, 0.0};
  if (decimal_ == Decimal::kMixed && MayBeThousands(cell)) return {Kind::kAmbiguous, 0.0};
  std::string with_point(cell);
  with_point[with_point.find(',')] = '.';
  number = ReadNumber(with_point);
  if (number.kind == Kind::kNumber) decimal_ = Decimal::kComma;
  return number;
}

bool IsMissing(std::string_view cell) {
  static constexpr std::string_view kWords[] = {"",     "na",      "n/a", "#n/a", "#nv", "nan",
                                                "null", "missing", "?",   ".",    "-",   "--"};
  constexpr std::size_t kLongest = 7;
  cell = Trimmed(cell);
  if (cell.size() > kLongest) return false;
  std::string lower(cell);
  for (char& c : lower)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return std::find(std::begin(kWords), std::end(kWords), lower) != std::end(kWords);
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
    case CsvNumber::Kind::kDecimalPoint:
      return Quoted(cell) +
             " is not a number, since the table has decimal commas; write all numbers alike, and "
             "nothing between thousands";
    case CsvNumber::Kind::kAmbiguous: {
      std::string thousands(Trimmed(cell));
      std::string decimal = thousands;
      decimal[decimal.find(',')] = '.';
      thousands.erase(thousands.find(','), 1);
      return Quoted(cell) + " may be " + decimal + " or " + thousands + "; write one of these";
    }
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

}  // namespace corvath::study
