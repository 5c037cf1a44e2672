#include "study/table/csv_writer.h"

#include <charconv>

namespace corvath::study {
namespace {

constexpr std::size_t kFlushAt = 1 << 16;

}  // namespace

void CsvText::Separate() {
  if (!is_first_) text_ += ',';
  is_first_ = false;
}

void CsvText::Add(std::string_view text) {
  Separate();
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
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
