#pragma once

#include "calculator/evaluator.h"
#include "calculator/parsed_text.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace corvath::calculator {

/// A function's node under evaluation, as the function sees it. Arguments are evaluated on demand;
/// a function asks for them from left to right, each once. Their numbers begin at 0.
class FunctionCall {
 public:
  FunctionCall(Evaluator& evaluator, const ParsedText& text, ParsedText::Index node)
      : evaluator_(evaluator), text_(text), node_(node) {}
  FunctionCall(const FunctionCall&) = delete;
  FunctionCall& operator=(const FunctionCall&) = delete;

  std::wstring GetName() const { return std::wstring(text_.GetText(node_)); }
  std::size_t Count() const { return text_.NumChildren(node_); }

  /// The value of argument i, below Count().
  math::Value Evaluate(std::size_t i);
  void Evaluate(std::size_t i, math::Value& result);
  /// All arguments; see Evaluator::EvaluateAll.
  std::vector<math::Value> EvaluateAll(const std::function<void(const math::Value&)>& check = {}) {
    return evaluator_.EvaluateAll(text_, node_, check);
  }
  /// The argument without a copy where that is possible. Nothing may be evaluated while the result,
  /// which may lie in `storage`, is in use.
  const math::Value& Borrow(std::size_t i, math::Value& storage);

  /// The number of an argument that must be a real SCALAR.
  /// @throws CExpressionPositionException  "2nd argument wrong in function ..."
  double Real(std::size_t i);
  /// Rounded to the nearest integer, half-way cases to even. @throws boost::numeric's overflow
  int Integer(std::size_t i);
  /// Truncated. @throws boost::numeric's overflow
  std::uint64_t Unsigned(std::size_t i);

  /// The truth value of an argument that must be BOOLEAN. Throws like Real().
  bool Boolean(std::size_t i);

  /// Whether argument i is a quoted text.
  bool IsString(std::size_t i) const;
  /// The quoted text of an argument.
  std::wstring GetString(std::size_t i) const;

  /// Counts multiplications of matrices, before they are made.
  /// @throws CCalculatorException  too many in one evaluation
  void CountMultiplications(std::uint64_t count) {
    evaluator_.GetWorkspace().CountSteps(count / kEntriesPerStep);
  }

  boost::random::mt19937& GetGenerator() { return evaluator_.GetWorkspace().GetGenerator(); }

  /// Raises at the function's node.
  [[noreturn]] void Raise(const std::wstring& message) const;
  [[noreturn]] void RaiseWrongArgument(std::size_t i) const;
  [[noreturn]] void RaiseWrongCount() const;

 private:
  Evaluator& evaluator_;
  const ParsedText& text_;
  ParsedText::Index node_;
};

}  // namespace corvath::calculator
