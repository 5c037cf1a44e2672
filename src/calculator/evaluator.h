#pragma once

#include "calculator/parsed_text.h"
#include "calculator/workspace.h"
#include "variant/value/variant.h"

#include <functional>
#include <string>
#include <vector>

namespace corvath::calculator {

/// Walks the tree of a text. Objects are read as they are when the walk comes to them: one with an
/// expression is evaluated at each read.
///
/// Of two operands the right one is evaluated first. A CVariantException that an operator or a
/// function raises becomes a CExpressionPositionException there.
class Evaluator {
 public:
  using Value = math::Value;
  using Index = ParsedText::Index;

  explicit Evaluator(Workspace& workspace) : workspace_(workspace) {}

  Workspace& GetWorkspace() { return workspace_; }

  /// The value of a whole text.
  void Evaluate(const ParsedText& text, Value& result) { Evaluate(text, text.GetRoot(), result); }
  void Evaluate(const ParsedText& text, Index node, Value& result);
  /// The value of `node`, in place if it is that of a plain object; otherwise in `storage`. Nothing
  /// may be evaluated while it is in use.
  const Value& Borrow(const ParsedText& text, Index node, Value& storage);
  /// The values of all children. Each passes `check`, if given, before the next one is evaluated.
  /// @throws CCalculatorException  too many numbers at a time
  std::vector<Value> EvaluateAll(const ParsedText& text, Index node,
                                 const std::function<void(const Value&)>& check = {});

  /// @throws CExpressionPositionException  always: `message`, and the text marked at `node`
  [[noreturn]] static void Raise(const ParsedText& text, Index node, const std::wstring& message);

 private:
  class Level;
  class Held;

  void EvaluateCore(const ParsedText& text, Index core, Value& result);
  void EvaluateConstant(const ParsedText& text, Index node, Value& result);
  void EvaluateFunction(const ParsedText& text, Index node, Value& result);
  void EvaluateUnary(const ParsedText& text, Index node, Value& result);
  void EvaluateBinary(const ParsedText& text, Index node, Value& result);
  void EvaluateChain(const ParsedText& text, Index node, Value& result);
  void EvaluateIndex(const ParsedText& text, Index node, Value& result);
  void EvaluateObject(Object& object, Value& result);
  void EvaluateVector(const ParsedText& text, Index node, Value& result);
  void EvaluateSlice(const ParsedText& text, Index node, Value& result);
  void EvaluateMatrix(const ParsedText& text, Index node, Value& result);
  void EvaluateAssign(const ParsedText& text, Index node, Value& result);
  void EvaluateAssignMacro(const ParsedText& text, Index node, Value& result);
  void EvaluateMacro(const ParsedText& text, Index node, Value& result);
  /// The text that stands for a macro's call.
  const ParsedText& Expand(const ParsedText& text, Index call);
  void EvaluateIf(const ParsedText& text, Index node, Value& result);
  void EvaluateSwitch(const ParsedText& text, Index node, Value& result);

  /// The value of a plain object that `node` names; null for any other node.
  const Value* FindPlainValue(const ParsedText& text, Index node) const;
  /// The same, null also where further evaluation might change it.
  const Value* FindLastingValue(const ParsedText& text, Index node) const;

  Workspace& workspace_;
};

}  // namespace corvath::calculator
