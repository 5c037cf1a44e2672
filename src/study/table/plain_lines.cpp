#include "study/table/plain_lines.h"

#include "study/table/csv_cell.h"

#include <algorithm>

namespace corvath::study {
namespace {

/// Whether one of the bytes in question is there. Without a branch, so that it runs on vectors.
bool HasMeaningfulByte(std::string_view text) {
  unsigned int found = 0;
  for (const char c : text)
    found |= static_cast<unsigned int>(c == '"') | static_cast<unsigned int>(c == '#') |
             static_cast<unsigned int>(c == '\0');
  return found != 0;
}

}  // namespace

std::optional<std::size_t> CountPlainLines(std::string_view text, std::size_t max_length) {
  if (HasMeaningfulByte(text)) return std::nullopt;
  for (std::size_t at = 0; (at = text.find('\r', at)) != std::string_view::npos; ++at)
    if (at + 1 == text.size() || text[at + 1] != '\n') return std::nullopt;
  std::size_t count = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (end > max_length) return std::nullopt;
    ++count;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return count;
}

bool TakeLine(std::string_view& text, std::string_view& line) {
  if (text.empty()) return false;
  const std::size_t end = std::min(text.find('\n'), text.size());
  line = text.substr(0, end);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  text.remove_prefix(std::min(end + 1, text.size()));
  return true;
}

void SplitPlainLine(std::string_view line, char separator, std::vector<std::string>& cells) {
  std::size_t count = 0;
  for (;;) {
    const std::size_t end = std::min(line.find(separator), line.size());
    if (count == cells.size()) cells.emplace_back();
    cells[count++].assign(Trimmed(line.substr(0, end)));
    if (end == line.size()) break;
    line.remove_prefix(end + 1);
  }
  cells.resize(count);
}

}  // namespace corvath::study
