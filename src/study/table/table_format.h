#pragma once

#include "study/table/csv_cell.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace corvath::study {

/// How a table is written: what stands between its cells and in its numbers, and which rows are no
/// designs. Rows count from 1, as a spreadsheet does.
struct TableFormat {
  char separator = ',';
  NumberFormat::Decimal decimal = NumberFormat::Decimal::kPoint;
  std::uint64_t separator_row = 0;     ///< "sep=;" above the header, as Excel knows it; 0: none
  std::uint64_t commented_header = 0;  ///< row of a header that begins with #; 0: none
  std::uint64_t unit_row = 0;          ///< under the header; 0: none
  std::string ambiguity;               ///< why the separator is not certain; empty: it is
};

/// Finds the format of the table that begins with `sample`, UTF-8 text.
///
/// - Commas, semicolons, tabs or, where there are none of these, upright bars separate: those that
///   the header has. Where it has several, those decide that split most rows into as many cells as
///   the header, then those that make most cells numbers. A first line "sep=;" has the last word.
/// - Commas are decimal only where they do not separate, and the numbers of the sample have no
///   points.
/// - A line that begins with # is a comment. The last one above a row of numbers is the header if it
///   has as many cells as that row.
/// - The row below the header holds units if each cell is empty or a unit (UnitOf), at least one is
///   more than a hyphen, and no column with a unit has other texts below.
/// @param complete  nothing follows the sample
TableFormat FindTableFormat(std::string_view sample, bool complete);

/// "semicolons" for example.
const char* NameOfSeparator(char separator);

/// The number of cells of a line. Separators between quotation marks do not count.
std::size_t CountCells(std::string_view line, char separator);

}  // namespace corvath::study
