#pragma once

#include <string>
#include <string_view>

namespace corvath::zel {

/// SHA-512 of the bytes of a file, as 128 lower-case hexadecimal characters.
/// @throws std::runtime_error "file doesn't exist", or a text that names a file that can't be read
std::string FileSignature(const std::wstring& path);

/// The same of the bytes themselves.
std::string BytesSignature(std::string_view bytes);

}  // namespace corvath::zel
