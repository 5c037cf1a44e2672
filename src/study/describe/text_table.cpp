#include "study/describe/text_table.h"

#include <algorithm>
#include <charconv>
#include <ostream>

namespace corvath::study {
namespace {

/// Characters, not bytes.
std::size_t Width(const std::string& utf8) {
  return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

}  // namespace

std::string Short(double value) {
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
  return std::string(text, end.ptr);
}

void TextTable::AddColumn(std::string title, Align align) {
  rows_.front().push_back(std::move(title));
  aligns_.push_back(align);
}

void TextTable::Print(std::ostream& out, const std::string& indent) const {
  std::vector<std::size_t> widths(aligns_.size());
  for (const auto& row : rows_)
    for (std::size_t i = 0; i < widths.size(); ++i) widths[i] = std::max(widths[i], Width(row[i]));
  for (const auto& row : rows_) {
    std::string line = indent;
    for (std::size_t i = 0; i < widths.size(); ++i) {
      const std::string padding(widths[i] - Width(row[i]), ' ');
      line += aligns_[i] == Align::kRight ? padding + row[i] : row[i] + padding;
      if (i + 1 < widths.size()) line += "  ";
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

}  // namespace corvath::study
