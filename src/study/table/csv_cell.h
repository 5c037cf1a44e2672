#pragma once

#include <string>
#include <string_view>

namespace corvath::study {

/// What a cell holds where a number is expected.
struct CsvNumber {
  enum class Kind {
    kNumber,  ///< infinity and nan are numbers, too
    kEmpty,
    kText,
    kDecimalComma,  ///< "1,5" or "1.234,5": digits and a comma, where points are expected
    kDecimalPoint,  ///< "1.5" or "1.234,5" in a table of decimal commas
    kAmbiguous,     ///< "1,234", which is 1.234 or 1234
    kOutOfRange     ///< of doubles; what is smaller than all of them is 0
  };

  Kind kind;
  double value;  ///< of a number
};

/// Reads a number as it stands in a table: with a point, whatever the locale.
CsvNumber ReadNumber(std::string_view cell);

/// Reads the numbers of one table, which are written alike: with decimal points, or with commas
/// where something else separates the cells.
class NumberFormat {
 public:
  enum class Decimal {
    kPoint,
    kComma,
    kUndecided,  ///< the first number with either decides; "1,234" counts as a decimal comma
    kMixed       ///< likewise, but "1,234" may be anything
  };

  explicit NumberFormat(Decimal decimal = Decimal::kPoint) : decimal_(decimal) {}

  CsvNumber Read(std::string_view cell);
  Decimal GetDecimal() const { return decimal_; }

 private:
  Decimal decimal_;
};

/// Whether the comma of "1,234" could separate thousands. False for other than digits and one comma.
bool MayBeThousands(std::string_view cell);

/// Why `cell` is refused where a number is expected: "\"1,5\" is not a number; ...".
std::string RefusalText(std::string_view cell, CsvNumber::Kind kind);

/// Whether a cell says that its value is missing: empty, or NA, N/A, #N/A, #NV, NaN, null, missing,
/// ?, ., - or --, in large or small letters.
bool IsMissing(std::string_view cell);

/// Without blanks and tabs at its ends: within quotes they stay.
std::string_view Trimmed(std::string_view cell);

/// A cell or a name as messages show it: in quotation marks, on one line, not too long.
std::string Quoted(std::string_view text);

}  // namespace corvath::study
