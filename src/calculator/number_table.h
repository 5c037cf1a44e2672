#pragma once

#include "variant/value/variant.h"

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace corvath::calculator {

/// The numbers of a text in rows, as programs write them: the value of read() and calculate().
///
///  - A line ends with LF, CR LF, CR or the text.
///  - A row is a line that begins with a number behind any blanks. Numbers are separated by blanks
///    or other visible characters that begin none; "1-2" therefore holds one number, the rest of
///    the line is a remark. Bytes above 127 count as visible.
///  - A number is [+-] digits [. digits] [e [+-] digits], digits on either side of the point, or
///    nan, nan(...), inf, infinity in any case. Beyond the range of doubles it is 0 or infinite.
///  - Lines in front of the first row are passed over; it gives the number of columns. The table
///    ends in front of a line that does not hold exactly as many numbers.
///
/// No row gives UNINITIALIZED, one number a SCALAR, one row or one column a VECTOR. Other tables
/// are a MATRIX unless the first column ascends strictly: then it is the abscissa of an XYDATA (two
/// columns) or of a SIGNAL with a channel for each further column.
///
/// Takes O(size) time, and memory for the numbers alone.
/// @param text           UTF-8, with or without a byte order mark, or any encoding that has ASCII
///                       in it
/// @param skipped_lines  lines to leave out at the begin, whatever they hold
/// @throws math::CDimensionException  more than math::kMaxEntries numbers
math::Value ParseNumberTable(std::string_view text, std::uint64_t skipped_lines);

/// The same of a file's content.
/// @throws std::filesystem::filesystem_error  it cannot be read, or is longer than 2 GiB
math::Value ReadNumberTable(const std::filesystem::path& path, std::uint64_t skipped_lines);

}  // namespace corvath::calculator
