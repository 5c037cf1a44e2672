#pragma once

#include "calculator/parsed_text.h"

#include <complex>
#include <cstdint>
#include <optional>
#include <vector>

namespace corvath::calculator {

/// A text of numbers, names, arithmetic and elementary functions as a list of steps on a stack of
/// numbers, for evaluations of the same text over and over. Names are bound to their objects once.
///
/// A run either gives what Evaluator gives, to the bit, or nothing: where an object is no plain
/// number, or where an operator raises. The walk of the tree then tells what is wrong.
class ScalarProgram {
 public:
  /// No steps where the text holds anything else, or nests deeper than the stack.
  explicit ScalarProgram(const ParsedText& text);

  bool IsEmpty() const { return steps_.empty(); }
  /// Not on an empty program.
  std::optional<std::complex<double>> Run() const;

 private:
  using Number = std::complex<double>;
  using Index = ParsedText::Index;

  static constexpr int kStackSize = 32;
  static constexpr int kMaxSteps = 1000;  ///< far below what one evaluation may take

  enum class Code : std::uint8_t {
    kNumber,
    kObject,
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
    Number (*function)(const Number&) = nullptr;
  };

  /// Appends the steps of a node, with `used` numbers on the stack; false if it has none.
  bool Append(const ParsedText& text, Index node, int used);
  /// The same of a sum, a product or a power.
  bool AppendChain(const ParsedText& text, Index core, int used);

  std::vector<Step> steps_;
};

}  // namespace corvath::calculator
