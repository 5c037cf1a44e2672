#include "exchange/c_text.h"

#include "foundation/text.h"

namespace corvath::exchange {

namespace {

bool IsPrintable(unsigned char c) {
  return c >= 0x20 && c < 0x7f;
}

/// Controls, and format characters of which some change the direction of what follows.
bool IsHidden(wchar_t c) {
  return c < 0x20 || (c >= 0x7f && c < 0xa0) || c == 0xad || c == 0x61c || c == 0xfeff ||
         (c >= 0x200b && c <= 0x200f) || (c >= 0x2028 && c <= 0x202e) ||
         (c >= 0x2060 && c <= 0x206f) || c >= 0xe0000;
}

}  // namespace

std::string CString(std::string_view utf8) {
  std::string literal = "\"";
  for (const char c : utf8) {
    const auto code = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\' || c == '?') {
      literal += '\\';
      literal += c;
    } else if (IsPrintable(code)) {
      literal += c;
    } else {  // three digits: a digit behind does not belong to it
      literal += '\\';
      for (const int shift : {6, 3, 0}) literal += static_cast<char>('0' + ((code >> shift) & 7));
    }
  }
  return literal + '"';
}

std::string CommentText(std::string_view utf8) {
  std::wstring text;
  for (const wchar_t c : utils::FromUtf8(utf8)) {
    const bool closes =
        !text.empty() && ((text.back() == L'*' && c == L'/') || (text.back() == L'/' && c == L'*'));
    if (closes) text += L' ';
    text += IsHidden(c) || c == L'\\' || c == L'?' ? L'_' : c;
  }
  return utils::ToUtf8(text);
}

std::string ShownName(std::string_view utf8) {
  constexpr std::size_t kMaxShown = 100;
  const std::string text = CommentText(utf8);
  if (text.size() <= kMaxShown) return '"' + text + '"';
  std::size_t end = kMaxShown;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return '"' + text.substr(0, end) + "\"...";
}

}  // namespace corvath::exchange
