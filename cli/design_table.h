#pragma once

#include "training/training_table.h"

#include <cstdint>
#include <string>
#include <vector>

namespace cli {

/// The designs of a table, and where in the table they stand.
struct DesignTable {
  std::string file;  ///< its name for messages
  corvath::training::TrainingTable data;
  std::vector<std::uint64_t> rows;  ///< of each design in the file
  std::vector<std::string> notes;   ///< on response cells that hold no number

  /// The message of `error` with the place that it speaks of.
  std::string Explain(const corvath::training::TrainingError& error) const;
};

/// The names in lists such as "a,b" (see ParseRecord), in their order.
/// @param option  for the message. @throws Refusal  a name is empty or stands there twice
std::vector<std::string> ParseNames(const std::vector<std::string>& lists, const char* option);

/// Reads the columns of a CSV. In the column of an input each cell must be a finite number; in that
/// of a response a cell that is none means that the design failed for this response.
/// @param discrete  inputs that take the table's values and no others
/// @throws Refusal  the table cannot be read, a name has no column or two, is input and response,
///                  or a column has no number; with file, row and column
DesignTable ReadDesignTable(const std::string& file, const std::vector<std::string>& inputs,
                            const std::vector<std::string>& responses,
                            const std::vector<std::string>& discrete);

}  // namespace cli
