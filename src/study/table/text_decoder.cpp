#include "study/table/text_decoder.h"

#include "foundation/text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace corvath::study {
namespace {

constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";
constexpr std::string_view kLittleEndianMark = "\xff\xfe";
constexpr std::string_view kBigEndianMark = "\xfe\xff";

/// Of the bytes 0x80 to 0x9f; 0 for those that have none. Source: Unicode's mapping table CP1252.
constexpr wchar_t kWindows1252[32] = {
    0x20ac, 0,      0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017d, 0,      0,      0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0,      0x017e, 0x0178};

bool TakeMark(std::string_view mark, std::string_view& bytes) {
  if (bytes.substr(0, mark.size()) != mark) return false;
  bytes.remove_prefix(mark.size());
  return true;
}

/// Bytes of ASCII that the text begins with.
std::size_t CountAscii(std::string_view bytes) {
  std::size_t size = 0;
  for (std::uint64_t eight; size + sizeof eight <= bytes.size(); size += sizeof eight) {
    std::memcpy(&eight, bytes.data() + size, sizeof eight);
    if ((eight & 0x8080808080808080) != 0) break;
  }
  while (size < bytes.size() && static_cast<unsigned char>(bytes[size]) < 0x80) ++size;
  return size;
}

/// Bytes that a character takes by its first one; 1 for a byte that begins none.
std::size_t LengthOf(char first) {
  const auto byte = static_cast<unsigned char>(first);
  if (byte >= 0xc2 && byte < 0xe0) return 2;
  if (byte >= 0xe0 && byte < 0xf0) return 3;
  if (byte >= 0xf0 && byte < 0xf5) return 4;
  return 1;
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
}

bool IsCharacter(std::string_view bytes) {
  const std::wstring wide = corvath::utils::FromUtf8(bytes);
  return wide.size() == 1 && (wide[0] != L'\xfffd' || bytes == "\xef\xbf\xbd");
}

std::string Hex(char c) {
  constexpr const char* kDigits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return {'0', 'x', kDigits[byte >> 4], kDigits[byte & 15]};
}

}  // namespace

/// Decides about the encoding as far as the first bytes tell it.
void TextDecoder::Begin(std::string_view& bytes) {
  if (TakeMark(kUtf8Mark, bytes)) {
    has_multibyte_ = true;  // it says so itself
    return;
  }
  if (TakeMark(kLittleEndianMark, bytes)) {
    encoding_ = Encoding::kUtf16LittleEndian;
  } else if (TakeMark(kBigEndianMark, bytes)) {
    encoding_ = Encoding::kUtf16BigEndian;
  } else {
    // Of each pair of a table's text one byte is zero, most of the time, and always the same one.
    constexpr std::size_t kSample = 4096;
    const std::size_t pairs = std::min(bytes.size(), kSample) / 2;
    std::size_t zeros[2] = {0, 0};
    for (std::size_t i = 0; i < 2 * pairs; ++i)
      if (bytes[i] == '\0') ++zeros[i % 2];
    if (pairs < 2) return;
    if (zeros[0] == 0 && 4 * zeros[1] >= 3 * pairs) encoding_ = Encoding::kUtf16LittleEndian;
    if (zeros[1] == 0 && 4 * zeros[0] >= 3 * pairs) encoding_ = Encoding::kUtf16BigEndian;
  }
}

void TextDecoder::Decode(std::string_view bytes, bool last, std::string& out) {
  if (!has_begun_) Begin(bytes);
  has_begun_ = true;
  if (!fault_.empty()) return;
  std::string joined;
  if (!rest_.empty()) {
    joined = rest_;
    joined += bytes;
    bytes = joined;
    rest_.clear();
  }
  switch (encoding_) {
    case Encoding::kUtf8:
      DecodeUtf8(bytes, last, out);
      break;
    case Encoding::kWindows1252:
      DecodeWindows(bytes, out);
      break;
    default:
      DecodeUtf16(bytes, last, out);
  }
}

void TextDecoder::DecodeUtf8(std::string_view bytes, bool last, std::string& out) {
  while (!bytes.empty()) {
    const std::size_t ascii = CountAscii(bytes);
    out += bytes.substr(0, ascii);
    bytes.remove_prefix(ascii);
    if (bytes.empty()) return;
    const std::size_t length = LengthOf(bytes[0]);
    if (!last && bytes.size() < length &&
        std::all_of(bytes.begin() + 1, bytes.end(), IsContinuation)) {
      rest_ = bytes;
      return;
    }
    const std::string_view character = bytes.substr(0, length);
    if (IsCharacter(character)) {
      has_multibyte_ = true;
      out += character;
      bytes.remove_prefix(length);
    } else if (!has_multibyte_) {
      encoding_ = Encoding::kWindows1252;  // all before was ASCII, which they share
      return DecodeWindows(bytes, out);
    } else {
      fault_ = "the byte " + Hex(bytes[0]) +
               " is no UTF-8, but characters before it are; save the table as UTF-8";
      return;
    }
  }
}

void TextDecoder::DecodeWindows(std::string_view bytes, std::string& out) {
  std::wstring wide;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    wide += byte >= 0x80 && byte < 0xa0 ? kWindows1252[byte - 0x80] : static_cast<wchar_t>(byte);
    if (wide.back() != 0 || byte == 0) continue;
    wide.pop_back();
    fault_ = "the byte " + Hex(c) + " is neither UTF-8 nor Windows-1252; save the table as UTF-8";
    break;
  }
  out += corvath::utils::ToUtf8(wide);
}

void TextDecoder::DecodeUtf16(std::string_view bytes, bool last, std::string& out) {
  const std::size_t high = encoding_ == Encoding::kUtf16LittleEndian ? 1 : 0;
  const auto unit = [&](std::size_t at) {
    return static_cast<wchar_t>(static_cast<unsigned char>(bytes[at + high]) << 8 |
                                static_cast<unsigned char>(bytes[at + 1 - high]));
  };
  std::wstring wide;
  std::size_t at = 0;
  for (; at + 1 < bytes.size(); at += 2) {
    wchar_t c = unit(at);
    if (c >= 0xd800 && c < 0xdc00) {
      if (at + 3 >= bytes.size() && !last) break;
      const wchar_t low = at + 3 < bytes.size() ? unit(at + 2) : L'\0';
      if (low < 0xdc00 || low > 0xdfff) {
        fault_ = "half of a UTF-16 character; the text is damaged";
        break;
      }
      c = 0x10000 + ((c - 0xd800) << 10) + (low - 0xdc00);
      at += 2;
    } else if (c >= 0xdc00 && c <= 0xdfff) {
      fault_ = "half of a UTF-16 character; the text is damaged";
      break;
    }
    wide += c;
  }
  out += corvath::utils::ToUtf8(wide);
  if (!fault_.empty()) return;
  if (at < bytes.size() && last)
    fault_ = "half of a UTF-16 character; the text is damaged";
  else
    rest_ = bytes.substr(at);
}

}  // namespace corvath::study
