#pragma once

#include "study/table/csv_reader.h"

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::study {

/// The header row of a table: where the columns are, and what messages call them.
class CsvHeader {
 public:
  /// @param table  its name for messages
  CsvHeader(std::string table, std::uint64_t row, CsvReader::Record names)
      : table_(std::move(table)), row_(row), names_(std::move(names)) {}

  /// Position of a column. @param kind  "input", "response", for the message
  /// @throws Refusal  there is none, or two; with a hint what could be meant
  std::size_t Find(const std::string& name, const char* kind) const;

  bool Has(const std::string& name) const;

  std::size_t GetSize() const { return names_.size(); }

  /// @throws Refusal  the record has fewer cells than the header, or more that are not empty
  void CheckSize(std::uint64_t row, const CsvReader::Record& record) const;

  /// "table.csv: row 3, column "x"".
  std::string Place(std::uint64_t row, std::size_t column) const;

 private:
  std::string Hint(const std::string& name) const;

  std::string table_;
  std::uint64_t row_;
  CsvReader::Record names_;
};

}  // namespace corvath::study
