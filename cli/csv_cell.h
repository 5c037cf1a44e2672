#pragma once

#include <string>
#include <string_view>

namespace cli {

/// What a cell holds where a number is expected.
struct CsvNumber {
  enum class Kind {
    kNumber,  ///< infinity and nan are numbers, too
    kEmpty,
    kText,
    kDecimalComma,  ///< "1,5" or "1.234,5": digits and a comma
    kOutOfRange     ///< of doubles; what is smaller than all of them is 0
  };

  Kind kind;
  double value;  ///< of a number
};

/// Reads a number as it stands in a table: with a point, whatever the locale.
CsvNumber ReadNumber(std::string_view cell);

/// Why `cell` is refused where a number is expected: "\"1,5\" is not a number; ...".
std::string RefusalText(std::string_view cell, CsvNumber::Kind kind);

/// A cell or a name as messages show it: in quotation marks, on one line, not too long.
std::string Quoted(std::string_view text);

}  // namespace cli
