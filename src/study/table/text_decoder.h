#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvath::study {

/// Turns the bytes of a text file, piece after piece, into UTF-8: UTF-8 with or without a byte order
/// mark, UTF-16 in both orders (by its mark or, without one, by the zeros of its Latin letters), and
/// Windows-1252, which holds Latin-1's letters. ASCII counts as UTF-8 until a byte cannot be that.
class TextDecoder {
 public:
  enum class Encoding { kUtf8, kUtf16LittleEndian, kUtf16BigEndian, kWindows1252 };

  /// Appends the text of `bytes` to `out`, up to the first fault.
  /// @param last  nothing follows
  void Decode(std::string_view bytes, bool last, std::string& out);

  Encoding GetEncoding() const { return encoding_; }
  /// What is wrong at the end of the decoded text; empty: nothing.
  const std::string& GetFault() const { return fault_; }

 private:
  void Begin(std::string_view& bytes);
  void DecodeUtf8(std::string_view bytes, bool last, std::string& out);
  void DecodeUtf16(std::string_view bytes, bool last, std::string& out);
  void DecodeWindows(std::string_view bytes, std::string& out);

  Encoding encoding_ = Encoding::kUtf8;
  bool has_begun_ = false;
  bool has_multibyte_ = false;  ///< a character of UTF-8 beyond ASCII was seen
  std::string rest_;            ///< bytes of a character whose end has not come yet
  std::string fault_;
};

}  // namespace corvath::study
