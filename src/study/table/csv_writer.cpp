#include "study/table/csv_writer.h"

#include <charconv>

namespace corvath::study {
namespace {

constexpr std::size_t kFlushAt = 1 << 16;

/// Whether a reader would take the bare text for something else: for several cells or lines, for
/// less than it is, as blanks at the ends do not count, or for a comment.
bool NeedsQuotes(std::string_view text) {
  constexpr std::string_view kBlanks = " \t";
  if (text.empty()) return false;
  return text.find_first_of(",;|\t\"\r\n") != text.npos || text.front() == '#' ||
         kBlanks.find(text.front()) != kBlanks.npos || kBlanks.find(text.back()) != kBlanks.npos;
}

}  // namespace

void CsvText::Separate() {
  if (!is_first_) text_ += ',';
  is_first_ = false;
}

void CsvText::Add(std::string_view text) {
  Separate();
  if (!NeedsQuotes(text)) {
    text_ += text;
    return;
  }
  text_ += '"';
  for (const char c : text) {
    if (c == '"') text_ += '"';
    text_ += c;
  }
  text_ += '"';
}

void CsvText::Add(double value) {
  Separate();
  if (value != value) {  // without the sign that a NaN may carry
    text_ += "nan";
    return;
  }
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  text_.append(digits, end.ptr);
}

void CsvText::EndRecord() {
  text_ += '\n';
  is_first_ = true;
}

void CsvWriter::EndRecord() {
  text_.EndRecord();
  if (text_.Get().size() >= kFlushAt) Flush();
}

void CsvWriter::Flush() {
  file_.Write(text_.Get());
  text_.Clear();
}

}  // namespace corvath::study
