#pragma once

#include "study/table/output_file.h"

#include <string>
#include <string_view>

namespace corvath::study {

/// Writes records of comma-separated values. Numbers are the shortest text that reads back exactly,
/// whatever the locale.
class CsvWriter {
 public:
  explicit CsvWriter(OutputFile& file) : file_(file) {}

  void Add(std::string_view text);  ///< quoted where it must be
  void Add(double value);
  void EndRecord();
  void Flush();

 private:
  void Separate();

  OutputFile& file_;
  std::string buffer_;
  bool first_ = true;
};

}  // namespace corvath::study
