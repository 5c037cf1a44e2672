#include "calculator/evaluator.h"

#include "calculator/calculator_exception.h"
#include "calculator/dependencies.h"
#include "calculator/function_call.h"
#include "calculator/parser.h"
#include "foundation/math_exception.h"
#include "foundation/stack.h"
#include "foundation/text.h"
#include "variant/functions/ordering.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/binary_functions.h"
#include "variant/value/limits.h"

#include <boost/lexical_cast/bad_lexical_cast.hpp>

#include <cmath>
#include <utility>

namespace corvath::calculator {

namespace {

using math::CVariantException;
using math::Value;
using utils::Quoted;

/// `left op right`; `result` may be an operand.
void Apply(Operator op, Value& result, const Value& left, const Value& right) {
  switch (op) {
    case Operator::kAdd:
      return math::Add(result, left, right);
    case Operator::kSubtract:
      return math::Subtract(result, left, right);
    case Operator::kMultiply:
      return math::Multiply(result, left, right);
    case Operator::kDivide:
      return math::Divide(result, left, right);
    case Operator::kModulo:
      return math::functions::mod(result, left, right);
    case Operator::kPower:
      return math::functions::pow(result, left, right);
    case Operator::kLess:
      result = Value(math::Less(left, right));
      return;
    case Operator::kGreater:
      result = Value(math::Greater(left, right));
      return;
    case Operator::kLessEqual:
      result = Value(math::LessEqual(left, right));
      return;
    case Operator::kGreaterEqual:
      result = Value(math::GreaterEqual(left, right));
      return;
    case Operator::kEqual:
      result = Value(left == right);
      return;
    case Operator::kNotEqual:
      result = Value(left != right);
      return;
    case Operator::kAnd:
      return math::And(result, left, right);
    case Operator::kOr:
      return math::Or(result, left, right);
    case Operator::kNone:
    case Operator::kNegate:
    case Operator::kNot:
      break;
  }
  throw std::logic_error("Operator without two operands");
}

/// Runs `action`; what the value type refuses in it is raised at the node.
template <class Action>
void RaisingAt(const ParsedText& text, ParsedText::Index node, Action action) {
  try {
    action();
  } catch (const CVariantException& error) {
    Evaluator::Raise(text, node, utils::FromUtf8(error.what()));
  }
}

/// Counts the numbers of `value` in `count`, one of the workspace's.
void CountEntries(const Workspace& workspace, const Value& value, std::size_t& count) {
  if (value.IsUninitialized() || value.IsScalar()) return;
  count += value.Size();
  if (count > workspace.max_entries)
    throw CCalculatorException(L"Values of more than " + std::to_wstring(workspace.max_entries) +
                               L" numbers at a time");
}

/// Counts the multiplications of a product of matrices, before they are made.
void CountProduct(Workspace& workspace, const Value& left, const Value& right) {
  const auto is_table = [](const Value& value) { return value.IsMatrix() || value.HasTimeline(); };
  if (is_table(left) && is_table(right) && (left.IsMatrix() || right.IsMatrix()))
    workspace.CountSteps(std::uint64_t{left.Size()} * right.Size2() / kEntriesPerStep);
}

}  // namespace

/// One level of the walk, counted against the limits.
class Evaluator::Level {
 public:
  explicit Level(Workspace& workspace) : workspace_(workspace) {
    if (workspace_.depth == 0) workspace_.steps = 0;
    workspace_.CountSteps(1);
    if (workspace_.depth >= kMaxDepth || utils::IsStackLow()) {
      if (workspace_.macro_depth > 1)
        throw CCircularDependencyException(L"Macros are called too deep inside each other");
      throw CCalculatorException(kNestedTooDeep);
    }
    ++workspace_.depth;
  }
  Level(const Level&) = delete;
  Level& operator=(const Level&) = delete;
  ~Level() { --workspace_.depth; }

 private:
  Workspace& workspace_;
};

/// Intermediate values that wait for others, counted together.
class Evaluator::Held {
 public:
  explicit Held(Workspace& workspace) : workspace_(workspace), before_(workspace.held_entries) {}
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;
  ~Held() { workspace_.held_entries = before_; }
  /// @throws CCalculatorException  all held values have too many numbers
  void Add(const Value& value) { CountEntries(workspace_, value, workspace_.held_entries); }

 private:
  Workspace& workspace_;
  std::size_t before_;
};

void Evaluator::Raise(const ParsedText& text, Index node, const std::wstring& message) {
  throw CExpressionPositionException(message, text.GetText(), text.GetOffset(node));
}

void Evaluator::Evaluate(const ParsedText& text, Index node, Value& result) {
  const Level level(workspace_);
  EvaluateCore(text, text.GetCore(node), result);
  if (result.IsVector() || result.IsMatrix() || result.HasTimeline())
    workspace_.steps += result.Size() / kEntriesPerStep;
}

void Evaluator::EvaluateCore(const ParsedText& text, Index core, Value& result) {
  switch (text.GetRule(core)) {
    case Rule::kConstant:
      return EvaluateConstant(text, core, result);
    case Rule::kFunction:
      return EvaluateFunction(text, core, result);
    case Rule::kIdent:
      result = Value();
      return;
    case Rule::kUnary:
      return EvaluateUnary(text, core, result);
    case Rule::kLogical:
    case Rule::kComparison:
    case Rule::kSum:
    case Rule::kProduct:
    case Rule::kPower:
      return EvaluateBinary(text, core, result);
    case Rule::kIndex:
      return EvaluateIndex(text, core, result);
    case Rule::kObject:
      return EvaluateObject(text.GetObject(core), result);
    case Rule::kVector:
      return EvaluateVector(text, core, result);
    case Rule::kSlice:
      return EvaluateSlice(text, core, result);
    case Rule::kMatrix:
      return EvaluateMatrix(text, core, result);
    case Rule::kAssign:
      return EvaluateAssign(text, core, result);
    case Rule::kAssignMacro:
      return EvaluateAssignMacro(text, core, result);
    case Rule::kMacro:
      return EvaluateMacro(text, core, result);
    case Rule::kIf:
      return EvaluateIf(text, core, result);
    case Rule::kSwitch:
      return EvaluateSwitch(text, core, result);
    case Rule::kExpression:
    case Rule::kOperand:
    case Rule::kParentheses:
    case Rule::kString:
      break;
  }
  throw CCalculatorException(L"Internal error: rule not handled");
}

const Value* Evaluator::FindPlainValue(const ParsedText& text, Index node) const {
  const Index core = text.GetCore(node);
  if (text.GetRule(core) != Rule::kObject) return nullptr;
  const Object* object = text.GetObject(core).Resolve();
  return object && object->expression.empty() ? &object->value : nullptr;
}

const Value* Evaluator::FindLastingValue(const ParsedText& text, Index node) const {
  const bool may_change = workspace_.texts.MayDefine() || workspace_.objects.HasUnread();
  return may_change ? nullptr : FindPlainValue(text, node);
}

const Value& Evaluator::Borrow(const ParsedText& text, Index node, Value& storage) {
  if (const Value* value = FindPlainValue(text, node)) return *value;
  Evaluate(text, node, storage);
  return storage;
}

std::vector<Value> Evaluator::EvaluateAll(const ParsedText& text, Index node,
                                          const std::function<void(const Value&)>& check) {
  Held held(workspace_);
  std::vector<Value> values(text.NumChildren(node));
  for (std::size_t i = 0; i < values.size(); ++i) {
    Evaluate(text, text.Child(node, i), values[i]);
    held.Add(values[i]);
    if (check) check(values[i]);
  }
  return values;
}

void Evaluator::EvaluateConstant(const ParsedText& text, Index node, Value& result) {
  const double number = text.GetNumber(node);
  if (std::isnan(number)) {
    Raise(text, node,
          L"Error in CONSTANT evaluation occurred: " +
              utils::FromUtf8(boost::bad_lexical_cast().what()));
  }
  result = Value(number);
}

void Evaluator::EvaluateFunction(const ParsedText& text, Index node, Value& result) {
  FunctionCall call(*this, text, node);
  const Function* function = text.GetFunction(node);
  if (!function) call.Raise(L"Function '" + call.GetName() + L"' not known.");
  if (!function->Takes(call.Count())) call.RaiseWrongCount();
  RaisingAt(text, node, [&] { function->run(call, result); });
}

void Evaluator::EvaluateUnary(const ParsedText& text, Index node, Value& result) {
  RaisingAt(text, node, [&] {
    Value storage;
    const Value& operand = Borrow(text, text.Child(node, 0), storage);
    if (text.GetOperator(node) == Operator::kNot)
      math::Not(result, operand);
    else
      math::Multiply(result, operand, Value(-1.0));
  });
}

void Evaluator::EvaluateBinary(const ParsedText& text, Index node, Value& result) {
  const Index left = text.Child(node, 0);
  if (text.IsBinary(text.GetCore(left))) return EvaluateChain(text, node, result);
  RaisingAt(text, node, [&] {
    Held held(workspace_);
    Value left_storage;
    Value right_storage;
    const Value* right = FindLastingValue(text, text.Child(node, 1));
    if (!right) {
      Evaluate(text, text.Child(node, 1), right_storage);
      held.Add(right_storage);
      right = &right_storage;
    }
    const Value& left_value = Borrow(text, left, left_storage);
    const Operator op = text.GetOperator(node);
    if (op == Operator::kMultiply) CountProduct(workspace_, left_value, *right);
    Apply(op, result, left_value, *right);
  });
}

/// Operators whose left operands are operators again, a+b-c+d, without a level for each of them.
void Evaluator::EvaluateChain(const ParsedText& text, Index node, Value& result) {
  struct Pending {
    Index node;
    const Value* in_place;  ///< the right operand, or null: it is `own`
    Value own;
  };
  Held held(workspace_);
  std::vector<Pending> pending;
  for (;;) {
    const Level step(workspace_);
    const Index right = text.Child(node, 1);
    pending.push_back({node, FindLastingValue(text, right), Value()});
    if (!pending.back().in_place) {
      RaisingAt(text, node, [&] { Evaluate(text, right, pending.back().own); });
      held.Add(pending.back().own);
    }
    const Index left = text.GetCore(text.Child(node, 0));
    if (!text.IsBinary(left)) break;
    node = left;
  }
  RaisingAt(text, node, [&] { Evaluate(text, text.Child(node, 0), result); });
  for (; !pending.empty(); pending.pop_back()) {
    const Pending& op = pending.back();
    RaisingAt(text, op.node, [&] {
      const Operator kind = text.GetOperator(op.node);
      const Value& right = op.in_place ? *op.in_place : op.own;
      if (kind == Operator::kMultiply) CountProduct(workspace_, result, right);
      Apply(kind, result, result, right);
    });
  }
}

void Evaluator::EvaluateObject(Object& object, Value& result) {
  const Object* known = object.Resolve();
  if (!known) {
    throw CCalculatorObjectUnknownException(L"Object " + Quoted(object.name) + L" not known.",
                                            object.name);
  }
  if (known->expression.empty()) {
    result = known->value;
    return;
  }
  if (object.evaluating) {
    throw CCircularDependencyException(L"object " + object.name +
                                       L" depends on expression dependent on " + object.name);
  }
  const ParsedText& text = workspace_.GetText(object);
  const std::wstring expression = object.expression;
  object.evaluating = true;
  struct Reset {
    ~Reset() { object.evaluating = false; }
    Object& object;
  } reset{object};
  Evaluate(text, result);
  // The evaluation may have assigned the object itself: its record is that of before.
  if (object.expression == expression)
    object.value = result;
  else
    workspace_.objects.Define(object, expression, result, &text);
}

void Evaluator::EvaluateVector(const ParsedText& text, Index node, Value& result) {
  Value::Kind kind = Value::UNINITIALIZED;
  std::size_t size = 0;
  const std::vector<Value> elements = EvaluateAll(text, node, [&](const Value& element) {
    if (!element.IsScalar() && !element.IsVector())
      Raise(text, node, L"Wrong input type, SCALAR or VECTOR expected");
    const bool is_first = kind == Value::UNINITIALIZED;
    if (!is_first && element.GetKind() != kind) Raise(text, node, L"Type inconsistency detected");
    if (!is_first && element.Size() != size)
      Raise(text, node, L"Given vector input must be of same length");
    kind = element.GetKind();
    size = element.Size();
  });
  const std::size_t n = elements.size();
  if (kind == Value::SCALAR) {
    Value::Vector vector(n);
    for (std::size_t i = 0; i < n; ++i) vector(i) = elements[i].GetScalar();
    result = Value(std::move(vector));
    return;
  }
  Value::Matrix matrix(n, size);
  for (std::size_t i = 0; i < n; ++i)
    for (std::size_t j = 0; j < matrix.size2(); ++j) matrix(i, j) = elements[i].GetVector()(j);
  result = Value(std::move(matrix));
}

void Evaluator::EvaluateMatrix(const ParsedText& text, Index node, Value& result) {
  const std::vector<Value> rows = EvaluateAll(text, node);
  for (const Value& row : rows)  // brackets too many make a row that is a matrix itself
    if (!row.IsVector() || row.Size() != rows[0].Size())
      throw CCalculatorException(L"Irregular matrix.");
  Value::Matrix matrix(rows.size(), rows[0].Size());
  for (std::size_t i = 0; i < matrix.size1(); ++i)
    for (std::size_t j = 0; j < matrix.size2(); ++j) matrix(i, j) = rows[i].GetVector()(j);
  result = Value(std::move(matrix));
}

void Evaluator::EvaluateAssign(const ParsedText& text, Index node, Value& result) {
  const std::size_t num_targets = text.NumChildren(node) - 1;
  const Index expression = text.Child(node, num_targets);
  const std::wstring expression_text(text.GetText(expression));
  for (std::size_t i = 0; i < num_targets; ++i) {
    Object& target = text.GetObject(text.Child(node, i));
    const ParsedText& parsed = workspace_.texts.Parse(expression_text);
    if (GetDependencies(workspace_, parsed).count(target.name) > 0)
      throw CCircularDependencyException(
          L"Assignment denied because of a circular dependency around " + Quoted(target.name));
    Evaluate(text, expression, result);
    if (ObjectTable::GetState(target) == kImmutable)
      throw CCalculatorException(L"Irregular object assignment: " + Quoted(target.name) +
                                 L" is an immutable object");
    CountEntries(workspace_, result, workspace_.assigned_entries);
    workspace_.objects.Define(target, expression_text, result, &parsed);
  }
}

void Evaluator::EvaluateAssignMacro(const ParsedText& text, Index node, Value& result) {
  CalculatorTypeTraits::Macro macro;
  const std::size_t n = text.NumChildren(node);  // name, arguments, "=", expression
  macro.macro_id_ = text.GetText(text.Child(node, 0));
  std::set<std::wstring> names;  // of empty parentheses one, an empty one, as in a call
  for (std::size_t i = 1; i + 2 < n; ++i) {
    std::wstring name(text.GetText(text.Child(node, i)));
    if (!names.insert(name).second)
      Raise(text, node,
            L"Macro argument " + Quoted(name) + L" erroneously used repeatedly in argument list");
    macro.arg_names_.push_back(std::move(name));
  }
  macro.expression_ = text.GetText(text.Child(node, n - 1));
  workspace_.macros.Define(std::move(macro));
  result = Value();
}

void Evaluator::EvaluateMacro(const ParsedText& text, Index node, Value& result) {
  const ParsedText& expansion = Expand(text, node);
  ++workspace_.macro_depth;
  struct Leave {
    ~Leave() { --workspace.macro_depth; }
    Workspace& workspace;
  } leave{workspace_};
  Evaluate(expansion, result);
}

const ParsedText& Evaluator::Expand(const ParsedText& text, Index call) {
  const auto raise_circular = [&](const std::wstring& name) {
    throw CCircularDependencyException(L"macro " + name + L" depends on expression dependent on " +
                                       name);
  };
  const bool is_deep = workspace_.macro_depth >= kMaxMacroDepth;
  const ParsedText* const known = workspace_.macros.FindExpansion(text, call);
  if (known && !is_deep) return *known;

  const std::wstring id(text.GetText(text.Child(call, 0)));
  const std::wstring name = L"$" + id;
  const CalculatorTypeTraits::Macro* const macro = workspace_.macros.Find(id);
  if (!macro) throw CCalculatorException(L"Unknown macro " + Quoted(name) + L" called");
  std::vector<std::wstring> arguments;
  for (std::size_t i = 1; i < text.NumChildren(call); ++i)
    arguments.emplace_back(text.GetText(text.Child(call, i)));
  const std::size_t expected = macro->arg_names_.size();
  if (arguments.size() != expected) {
    throw CCalculatorException(L"Invalid number of arguments: " +
                               Quoted(name + L"(" + std::to_wstring(expected) + L")"));
  }
  if (is_deep) raise_circular(name);
  const std::wstring expansion = ExpandMacro(*macro, arguments);
  if (expansion.size() > kMaxTextLength) raise_circular(name);
  const ParsedText& parsed = workspace_.texts.Parse(expansion);
  workspace_.macros.KeepExpansion(text, call, parsed);
  return parsed;
}

void Evaluator::EvaluateIf(const ParsedText& text, Index node, Value& result) {
  Value condition;
  Evaluate(text, text.Child(node, 0), condition);
  if (!condition.IsBoolean()) throw math::CTypeException("Input object not of type BOOLEAN.");
  Evaluate(text, text.Child(node, condition.GetBoolean() ? 1 : 2), result);
}

void Evaluator::EvaluateSwitch(const ParsedText& text, Index node, Value& result) {
  Held held(workspace_);
  Value selector;
  Evaluate(text, text.Child(node, 0), selector);
  held.Add(selector);
  const std::size_t n = text.NumChildren(node);
  for (std::size_t i = 1; i + 1 < n; i += 2) {
    const Index child = text.Child(node, i);
    const std::wstring_view word = text.GetText(child);
    if (word.front() == L'#') {
      // The rule lets no other word through that is a token; an #if or #switch is refused here.
      if (text.GetRule(child) != Rule::kSwitch) Raise(text, node, L"Unexpected keyword");
      return Evaluate(text, text.Child(node, i + 1), result);
    }
    Value value;
    Evaluate(text, child, value);
    if (value == selector) return Evaluate(text, text.Child(node, i + 1), result);
  }
  result = Value();
}

}  // namespace corvath::calculator
