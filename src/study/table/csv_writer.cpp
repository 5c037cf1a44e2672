#include "study/table/csv_writer.h"

#include <charconv>

namespace corvath::study {
namespace {

constexpr std::size_t kFlushAt = 1 << 16;

}  // namespace

void CsvWriter::Separate() {
  if (!first_) buffer_ += ',';
  first_ = false;
}

void CsvWriter::Add(std::string_view text) {
  Separate();
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    buffer_ += text;
    return;
  }
  buffer_ += '"';
  for (const char c : text) {
    if (c == '"') buffer_ += '"';
    buffer_ += c;
  }
  buffer_ += '"';
}

void CsvWriter::Add(double value) {
  Separate();
  if (value != value) {  // without the sign that a NaN may carry
    buffer_ += "nan";
    return;
  }
  char text[32];
  const auto end = std::to_chars(text, text + sizeof text, value);
  buffer_.append(text, end.ptr);
}

void CsvWriter::EndRecord() {
  buffer_ += '\n';
  first_ = true;
  if (buffer_.size() >= kFlushAt) Flush();
}

void CsvWriter::Flush() {
  file_.Write(buffer_);
  buffer_.clear();
}

}  // namespace corvath::study
