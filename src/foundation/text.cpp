#include "foundation/text.h"

#include <cstdint>
#include <stdexcept>

namespace corvath::utils {
namespace {

constexpr wchar_t kReplacement = 0xFFFD;

bool IsScalarValue(std::uint32_t c) {
  return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}

void AppendUtf8(std::uint32_t c, std::string& out) {
  const auto trail = [&](int shift) { out += static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    trail(0);
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    trail(6), trail(0);
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    trail(12), trail(6), trail(0);
  }
}

/// Reads one character at `pos` and moves behind it, or behind the longest prefix that could have
/// begun one (the Unicode standard's "maximal subpart", table 3-7).
wchar_t Decode(std::string_view text, std::size_t& pos) {
  const auto lead = static_cast<unsigned char>(text[pos++]);
  if (lead < 0x80) return static_cast<wchar_t>(lead);
  int trailing = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  std::uint32_t value = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    trailing = 1;
    value = lead & 0x1Fu;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    trailing = 2;
    value = lead & 0x0Fu;
    if (lead == 0xE0) low = 0xA0;   // overlong below
    if (lead == 0xED) high = 0x9F;  // surrogates above
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    trailing = 3;
    value = lead & 0x07u;
    if (lead == 0xF0) low = 0x90;   // overlong below
    if (lead == 0xF4) high = 0x8F;  // beyond U+10FFFF above
  } else {
    return kReplacement;
  }
  for (; trailing > 0; --trailing) {
    if (pos == text.size()) return kReplacement;
    const auto next = static_cast<unsigned char>(text[pos]);
    if (next < low || next > high) return kReplacement;
    low = 0x80, high = 0xBF;
    value = (value << 6) | (next & 0x3Fu);
    ++pos;
  }
  return static_cast<wchar_t>(value);
}

}  // namespace

std::wstring FromUtf8(std::string_view utf8) {
  std::wstring wide;
  wide.reserve(utf8.size());
  for (std::size_t pos = 0; pos < utf8.size();) wide += Decode(utf8, pos);
  return wide;
}

std::string ToUtf8(std::wstring_view wide) {
  std::string utf8;
  utf8.reserve(wide.size());
  for (const wchar_t c : wide) {
    const auto code = static_cast<std::uint32_t>(c);
    AppendUtf8(IsScalarValue(code) ? code : '?', utf8);
  }
  return utf8;
}

std::string ToUtf8Strict(std::wstring_view wide) {
  for (const wchar_t c : wide)
    if (!IsScalarValue(static_cast<std::uint32_t>(c)))
      throw std::domain_error("invalid input character");
  return ToUtf8(wide);
}

std::wstring Quoted(const std::wstring& text) {
  return L"\"" + text + L"\"";
}

}  // namespace corvath::utils
