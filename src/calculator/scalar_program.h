#pragma once

#include "calculator/macro_table.h"
#include "calculator/parsed_text.h"

#include <complex>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

namespace corvath::calculator {

/// A text of numbers, names, elements "name[2]", arithmetic and elementary functions as a list of steps on a stack of
/// numbers, for evaluations of the same text over and over. Names are bound to their objects once.
///
/// A run either gives what Evaluator gives, to the bit, or nothing: where an object is no plain
/// number, or where an operator raises. The walk of the tree then tells what is wrong.
class ScalarProgram {
 public:
  /// No steps where the text holds anything else, or nests deeper than the stack. Calls of macros
  /// count as what they stand for, if that has been worked out before.
  ScalarProgram(const ParsedText& text, const MacroTable& macros);

  bool IsEmpty() const { return steps_.empty(); }
  /// Not on an empty program.
  std::optional<std::complex<double>> Run() const;

  /// The real numbers that an object, or an element of a vector, has at the rows of a block. All
  /// others have at each row what they have now.
  using Columns = std::map<std::pair<const Object*, std::size_t>, const double*>;
  static constexpr std::size_t kWhole = -1;  ///< in place of an element
  static constexpr std::size_t kMaxRows = 64;
  static constexpr std::size_t kWorkSize = 34 * kMaxRows;

  /// Run() at some rows, step by step for all of them, as long as numbers stay real. Not on an empty
  /// program.
  /// @param rows     at most kMaxRows
  /// @param work     kWorkSize numbers
  /// @param results  receives a number for each row: the real part of what Run() gives, whose
  ///                 imaginary part is 0; zeros may have another sign
  /// @param defects  a number for each row, which becomes NaN where the result counts for nothing:
  ///                 something on the way is not real or not finite, or raises
  /// @return         false if an object is no real number
  bool RunRows(const Columns& columns, std::size_t rows, double* work, double* results,
               double* defects) const;

 private:
  using Number = std::complex<double>;
  using Index = ParsedText::Index;

  static constexpr int kStackSize = 32;
  static_assert(kWorkSize == (kStackSize + 2) * kMaxRows);
  static constexpr int kMaxSteps = 1000;  ///< far below what one evaluation may take

  enum class Code : std::uint8_t {
    kNumber,
    kObject,  ///< or an element of one
    kAdd,
    kSubtract,
    kMultiply,
    kDivide,
    kSquare,  ///< of the value on top; so are the following ones
    kPower,
    kNegate,
    kFunction
  };
  struct Step {
    Code code;
    double number = 0.0;
    const Object* object = nullptr;
    std::size_t element = kWhole;
    Number (*function)(const Number&) = nullptr;

    /// Of an object or element what it is now, if that is a number.
    std::optional<Number> GetNumber() const;
  };

  /// Appends the steps of a node, with `used` numbers on the stack; false if it has none.
  bool Append(const ParsedText& text, Index node, int used, const MacroTable& macros);
  /// The same of a sum, a product or a power.
  bool AppendChain(const ParsedText& text, Index core, int used, const MacroTable& macros);

  std::vector<Step> steps_;
};

}  // namespace corvath::calculator
