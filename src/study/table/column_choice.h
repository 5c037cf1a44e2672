#pragma once

#include "study/wording.h"

#include <string>
#include <vector>

namespace corvath::study {

/// The columns that a training takes, as its options name them: names, patterns with * and ?, and,
/// for inputs, "all".
struct ColumnChoice {
  std::vector<std::string> inputs;
  std::vector<std::string> responses;
  std::vector<std::string> discrete;  ///< inputs that take the table's values and no others
  std::vector<std::string> dates;     ///< inputs and responses that are dates
  std::vector<std::string> ignored;   ///< what patterns and "all" leave out
  Wording wording = Wording::kKeys;   ///< of messages

  /// The choice with the names that the header of a table has, in its order, in place of patterns.
  /// A column of just that name wins over its meaning as a pattern. Patterns of responses leave out
  /// the inputs that have names of their own; patterns of inputs, and "all", leave out all
  /// responses. Columns without a name fit no pattern.
  /// @throws Refusal  a pattern fits no column; a name is input and response; a vector response and
  ///                  one of its elements are both columns; a discrete one is no input, or a date
  ///                  neither input nor response
  ColumnChoice Resolve(const std::vector<std::string>& header) const;
};

/// Whether `name` is one of `names`.
bool Contains(const std::vector<std::string>& names, const std::string& name);

}  // namespace corvath::study
