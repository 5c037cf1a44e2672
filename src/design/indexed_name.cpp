#include "design/indexed_name.h"

#include <limits>

namespace corvath::algorithm::datatypes {

std::wstring IndexedName(const std::wstring& base, std::uint64_t index) {
  return base + L"[" + std::to_wstring(index) + L"]";
}

std::optional<std::int64_t> SplitName::GetIndex() const {
  const bool has_sign = !index_text.empty() && (index_text[0] == L'-' || index_text[0] == L'+');
  const bool negative = has_sign && index_text[0] == L'-';
  if (index_text.size() == (has_sign ? 1u : 0u)) return std::nullopt;
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  std::int64_t number = 0;  // gathered as a negative number, whose range is larger by one
  for (std::size_t i = has_sign ? 1 : 0; i < index_text.size(); ++i) {
    const wchar_t c = index_text[i];
    if (c < L'0' || c > L'9') return std::nullopt;
    const std::int64_t digit = c - L'0';
    if (number < (kMin + digit) / 10) return std::nullopt;
    number = number * 10 - digit;
  }
  if (negative) return number;
  if (number == kMin) return std::nullopt;
  return -number;
}

SplitName SplitIndexedName(const std::wstring& name) {
  SplitName parts;
  const std::size_t open = name.rfind(L'[');
  const std::size_t close = open == std::wstring::npos ? open : name.find(L']', open);
  parts.has_brackets = close != std::wstring::npos;
  parts.base = parts.has_brackets ? name.substr(0, open) : name;
  if (parts.has_brackets) parts.index_text = name.substr(open + 1, close - open - 1);
  return parts;
}

}  // namespace corvath::algorithm::datatypes
