#pragma once

#include <string>
#include <string_view>

/// Conversion between the wide text inside (UTF-32) and the UTF-8 outside.
namespace corvath::utils {

/// Wide text of `utf8`. Each maximal undecodable sequence (truncated, overlong, surrogate, above
/// U+10FFFF) becomes one U+FFFD; never fails.
std::wstring FromUtf8(std::string_view utf8);

/// UTF-8 of `wide`; a character that is no Unicode scalar value becomes "?". Never fails.
std::string ToUtf8(std::wstring_view wide);

/// UTF-8 of `wide`.
/// @throws std::domain_error "invalid input character" for a character that is no scalar value
std::string ToUtf8Strict(std::wstring_view wide);

/// `text` between double quotes, as messages show names.
std::wstring Quoted(const std::wstring& text);

}  // namespace corvath::utils
