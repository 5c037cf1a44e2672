#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::study {

/// Lines of a table in which separators separate and nothing has another meaning: no quotation
/// marks, no #, no zero bytes, no line ends but LF and CR LF. They can be read apart from the rest.
struct PlainLines {
  std::string text;
  std::uint64_t first_row = 0;  ///< as CsvReader counts
};

/// The number of lines of `text`, of which the last may be without an end. None: they are not plain,
/// or one is longer than `max_length` bytes.
std::optional<std::size_t> CountPlainLines(std::string_view text, std::size_t max_length);

/// Takes the first line off `text`, without its end. False at the end of the text.
bool TakeLine(std::string_view& text, std::string_view& line);

/// The cells of a plain line, without blanks at their ends; one for an empty line.
void SplitPlainLine(std::string_view line, char separator, std::vector<std::string>& cells);

}  // namespace corvath::study
