#pragma once

#include "study/result.h"
#include "study/table/csv_cell.h"
#include "study/table/table_source.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::study {

/// A table in memory, column by column.
class MemoryTable {
 public:
  /// A table without columns.
  MemoryTable() = default;
  /// Reads a file as CsvReader does. @throws Refusal
  static MemoryTable ReadCsv(const std::string& path);

  // Each appends a column. @throws Refusal  no name, one that there is, or another number of rows
  void AddNumbers(std::string name, std::vector<double> values);     ///< NaN: missing
  void AddTexts(std::string name, std::vector<std::string> values);  ///< empty: missing
  /// @throws Refusal  there is no such column
  void SetUnit(const std::string& name, std::string unit);

  /// What it holds, see zelstudy_table_describe().
  Result Describe() const;

 private:
  friend class MemoryTableSource;

  struct Column {
    std::string name;
    bool is_numbers = false;
    std::vector<double> numbers;     ///< one for each row, or none
    std::vector<std::string> texts;  ///< likewise
    std::string unit;
  };

  void Add(Column column);

  std::string name_ = "table";
  std::string format_;  ///< what was found out about a file
  NumberFormat number_format_;
  std::vector<Column> columns_;
  std::size_t num_rows_ = 0;
  std::vector<std::uint64_t> rows_;  ///< of each row in a file; empty: there is none
  std::uint64_t header_row_ = TableSource::kNoRow;
};

/// Reads a table in memory. The table must outlive it and stay as it is.
class MemoryTableSource : public TableSource {
 public:
  explicit MemoryTableSource(const MemoryTable& table);

  void ReadAll(const Handler& handler) override;
  CsvNumber ReadNumber(std::string_view cell) override { return numbers_.Read(cell); }
  const Record& GetUnits() const override { return units_; }
  std::string DescribeFormat() const override { return table_.format_; }
  const std::string& GetName() const override { return table_.name_; }

 private:
  const MemoryTable& table_;
  NumberFormat numbers_;
  Record units_;
};

}  // namespace corvath::study
