#pragma once

#include "study/project/project.h"
#include "study/table/csv_header.h"
#include "study/table/plain_lines.h"
#include "study/table/table_columns.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvath::study {

/// Designs from rows of a table, and the rows that they stood in.
struct DesignRows {
  Eigen::MatrixXd values;  ///< the first `numbers.size()` rows count
  std::vector<std::uint64_t> numbers;

  std::size_t GetSize() const { return numbers.size(); }
  Project::Points Get() const { return values.topRows(static_cast<Eigen::Index>(GetSize())); }
};

/// Where the inputs of a project stand in the rows of a table, and how their cells are read. Once
/// the header is set, threads may share it.
class InputCells {
 public:
  /// @param inputs   of the project, which must outlive this
  /// @param columns  what the project tells about the table of its training
  InputCells(const std::vector<std::string>& inputs, const TableColumns& columns);

  /// Finds the column of each input, under its name or under that which it had in the table of the
  /// training. @throws Refusal  an input has none, or two
  void SetHeader(CsvHeader header);
  bool HasHeader() const { return header_.has_value(); }

  /// Adds the design of a record. @throws Refusal  a cell or their number is refused
  void Read(std::uint64_t row, const CsvReader::Record& record, NumberFormat& format,
            DesignRows& rows) const;

  /// Adds the designs of all lines but blank ones. @throws Refusal  as Read()
  void ReadLines(const PlainLines& lines, char separator, NumberFormat format,
                 DesignRows& rows) const;

  /// "table.csv: row 3, column "x"". @param row  as the table counts
  std::string Place(std::uint64_t row, std::size_t input) const;

 private:
  bool ReadNumbers(std::string_view line, char separator, DesignRows& rows) const;

  const std::vector<std::string>& inputs_;
  std::optional<CsvHeader> header_;
  std::vector<TableColumn> told_;      ///< about each input
  std::vector<std::size_t> columns_;   ///< of each input in the file
  std::vector<Eigen::Index> by_cell_;  ///< the input of each column or kIgnored; empty where cells
                                       ///< are more than numbers
};

}  // namespace corvath::study
