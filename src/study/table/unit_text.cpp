#include "study/table/unit_text.h"

#include "foundation/text.h"
#include "study/table/csv_cell.h"

#include <algorithm>
#include <iterator>

namespace corvath::study {
namespace {

/// Symbols that take decimal prefixes, then those that take none.
constexpr std::wstring_view kPrefixed[] = {
    L"m", L"g",  L"s", L"A",  L"K",   L"mol", L"cd", L"rad",    L"sr",     L"Hz",
    L"N", L"Pa", L"J", L"W",  L"C",   L"V",   L"F",  L"\u03a9", L"\u2126", L"Ohm",
    L"S", L"Wb", L"T", L"H",  L"lm",  L"lx",  L"Bq", L"Gy",     L"Sv",     L"kat",
    L"l", L"L",  L"t", L"eV", L"bar", L"cal", L"B",  L"Wh",     L"Ah",     L"VA"};
constexpr std::wstring_view kPlain[] = {
    L"%",   L"\u2030", L"\u00b0", L"\u00b0C", L"\u00b0F", L"deg",  L"degC", L"degF",
    L"min", L"h",      L"d",      L"a",       L"in",      L"ft",   L"yd",   L"mi",
    L"lb",  L"lbf",    L"oz",     L"psi",     L"ksi",     L"mph",  L"rpm",  L"kn",
    L"ppm", L"ppb",    L"px",     L"dB",      L"atm",     L"Torr", L"mmHg", L"hp",
    L"PS",  L"gal",    L"USD",    L"EUR",     L"\u20ac",  L"$",    L"ha"};
constexpr std::wstring_view kPrefixes[] = {L"da", L"y",      L"z",      L"a", L"f", L"p", L"n",
                                           L"u",  L"\u00b5", L"\u03bc", L"m", L"c", L"d", L"h",
                                           L"k",  L"M",      L"G",      L"T", L"P", L"E"};

template <std::size_t kSize>
bool Has(const std::wstring_view (&list)[kSize], std::wstring_view text) {
  return std::find(std::begin(list), std::end(list), text) != std::end(list);
}

bool IsSymbol(std::wstring_view text) {
  if (Has(kPrefixed, text) || Has(kPlain, text)) return true;
  return std::any_of(std::begin(kPrefixes), std::end(kPrefixes), [&](std::wstring_view prefix) {
    return text.substr(0, prefix.size()) == prefix && Has(kPrefixed, text.substr(prefix.size()));
  });
}

bool IsOperator(wchar_t c) {
  return std::wstring_view(L" */.\u00b7\u22c5()").find(c) != std::wstring_view::npos;
}

/// Exponents, written as ^2, ^-1, **2, 2 or with raised digits.
bool IsExponent(wchar_t c) {
  return std::wstring_view(L"0123456789^-+\u00b9\u00b2\u00b3\u207b").find(c) !=
         std::wstring_view::npos;
}

/// Products and quotients of symbols with exponents: "N/mm^2", "kg m s-2", "1/s".
bool IsExpression(std::wstring_view text) {
  bool any = false;
  while (!text.empty()) {
    std::size_t end = 0;
    while (end < text.size() && !IsOperator(text[end]) && !IsExponent(text[end])) ++end;
    if (end > 0) {
      if (!IsSymbol(text.substr(0, end))) return false;
      any = true;
    } else {
      end = 1;
    }
    text.remove_prefix(end);
  }
  return any;
}

}  // namespace

std::string UnitOf(std::string_view cell) {
  constexpr std::size_t kLongest = 40;
  cell = Trimmed(cell);
  if (cell.size() > kLongest || cell.empty()) return {};
  const bool bracketed =
      cell.size() > 2 &&
      ((cell.front() == '[' && cell.back() == ']') || (cell.front() == '(' && cell.back() == ')') ||
       (cell.front() == '{' && cell.back() == '}') || (cell.front() == '<' && cell.back() == '>'));
  const std::string_view inner = bracketed ? Trimmed(cell.substr(1, cell.size() - 2)) : cell;
  if (inner == "-" || inner == "--" || inner == "1") return inner == "1" && !bracketed ? "" : "-";
  if (ReadNumber(inner).kind == CsvNumber::Kind::kNumber) return {};
  if (bracketed || IsExpression(corvath::utils::FromUtf8(inner))) return std::string(inner);
  return {};
}

}  // namespace corvath::study
