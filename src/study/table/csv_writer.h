#pragma once

#include "study/table/output_file.h"

#include <string>
#include <string_view>

namespace corvath::study {

/// Records of comma-separated values as text. Numbers are the shortest text that reads back exactly,
/// whatever the locale.
class CsvText {
 public:
  void Add(std::string_view text);  ///< quoted where it must be
  void Add(double value);
  void EndRecord();
  void Clear() { text_.clear(); }

  const std::string& Get() const { return text_; }

 private:
  void Separate();

  std::string text_;
  bool is_first_ = true;
};

/// Writes such records to a file, some at a time.
class CsvWriter {
 public:
  explicit CsvWriter(OutputFile& file) : file_(file) {}

  void Add(std::string_view text) { text_.Add(text); }
  void Add(double value) { text_.Add(value); }
  void EndRecord();
  void Flush();

 private:
  OutputFile& file_;
  CsvText text_;
};

}  // namespace corvath::study
