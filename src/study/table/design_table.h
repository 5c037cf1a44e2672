#pragma once

#include "study/table/column_choice.h"
#include "study/table/table_columns.h"
#include "study/table/table_source.h"
#include "training/training_table.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace corvath::study {

/// The designs of a table, and where in the table they stand.
struct DesignTable {
  std::string file;  ///< its name for messages
  corvath::training::TrainingTable data;
  TableColumns columns;                      ///< words and dates among inputs and responses
  std::map<std::string, std::string> units;  ///< by column; from a row of units
  std::vector<std::uint64_t> rows;           ///< of each design in the file
  std::vector<std::string> notes;  ///< on the format, rows left out, words, response cells that
                                   ///< hold no number

  /// The message of `error` with the place that it speaks of.
  std::string Explain(const corvath::training::TrainingError& error) const;
};

/// The names in lists such as "a,b" (see ParseRecord), in their order.
/// @param option  for the message. @throws Refusal  a name is empty or stands there twice
std::vector<std::string> ParseNames(const std::vector<std::string>& lists, const char* option);

/// Reads the columns of a table.
///
/// - The cells of an input are finite numbers, or all words: of at most kMaxWords different ones,
///   each of them in two rows on average. Words become codes from 0 in the order of their bytes, and
///   their input is discrete.
/// - Dates become days since kDateOrigin; 01/02/2024 is read as other dates of the column demand.
/// - In the column of a response a cell that is no number means that the design failed for this
///   response.
/// @param skip_incomplete  rows with a missing input (IsMissing) are left out, not refused
/// @throws Refusal  the table cannot be read, see ColumnChoice::Resolve, a name has no column or
///                  two, a cell does not fit, or a column has no number; with file, row and column
DesignTable ReadDesignTable(TableSource& source, const ColumnChoice& choice, bool skip_incomplete);

constexpr std::size_t kMaxWords = 30;

}  // namespace corvath::study
