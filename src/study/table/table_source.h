#pragma once

#include "study/table/csv_cell.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace corvath::study {

/// A table as its reader passes it on: record after record, the header first.
class TableSource {
 public:
  using Record = std::vector<std::string>;
  /// @param row  for messages: as a spreadsheet counts, or from 0 where there is no file
  using Handler = std::function<void(std::uint64_t row, const Record& record)>;

  /// The row of a header that is no row of a file.
  static constexpr std::uint64_t kNoRow = ~std::uint64_t{0};

  virtual ~TableSource() = default;

  /// Reads to the end. What `handler` throws ends the reading and passes on.
  /// @throws Refusal  the table cannot be read
  virtual void ReadAll(const Handler& handler) = 0;
  /// Reads a number as the table's numbers are written.
  virtual CsvNumber ReadNumber(std::string_view cell) = 0;
  /// The units of the columns; empty without such.
  virtual const Record& GetUnits() const = 0;
  /// What was found out about the form of a file, after reading; empty if that is a plain one.
  virtual std::string DescribeFormat() const = 0;
  /// Name for messages.
  virtual const std::string& GetName() const = 0;
};

}  // namespace corvath::study
