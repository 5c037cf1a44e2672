#include "exchange/criteria_reader.h"

#include "calculator/calculator.h"
#include "calculator/workspace.h"
#include "design/indexed_name.h"
#include "exchange/model_reader.h"
#include "foundation/exception.h"
#include "foundation/text.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <new>
#include <optional>
#include <utility>

namespace corvath::exchange {

namespace {

using algorithm::datatypes::Criterion;
using algorithm::datatypes::CriterionSequence;
using calculator::Object;
using calculator::ParsedText;
using calculator::Rule;
using Index = ParsedText::Index;
using Kind = Expression::Kind;
using Op = Expression::Operator;

constexpr std::size_t kMaxNodes = 1000;
/// Nested parentheses that every compiler takes.
constexpr std::size_t kMaxDepth = 60;
constexpr std::size_t kMaxChain = 200;  ///< of criteria that read each other
/// Elements of a vector response that a text may name one by one.
constexpr std::size_t kMaxElements = 500;

/// What a part of a text stands for: one number, or those of a vector.
struct Operand {
  std::vector<Expression> elements;
  bool is_vector = false;
};

Expression NumberOf(double number) {
  if (!std::isfinite(number)) throw NotDescribable("a number is not finite");
  Expression expression;
  expression.number = number;
  return expression;
}

Expression Reference(Kind kind, std::size_t position) {
  Expression expression;
  expression.kind = kind;
  expression.position = position;
  return expression;
}

Expression Apply(Op op, std::vector<Expression> arguments) {
  Expression expression;
  expression.kind = Kind::kOperator;
  expression.op = op;
  expression.arguments = std::move(arguments);
  return expression;
}

std::size_t DepthOf(const Expression& expression) {
  std::size_t depth = 0;
  for (const Expression& argument : expression.arguments)
    depth = std::max(depth, DepthOf(argument));
  return depth + 1;
}

std::size_t CountNodes(const Expression& expression) {
  std::size_t count = 1;
  for (const Expression& argument : expression.arguments) count += CountNodes(argument);
  return count;
}

std::optional<Op> FindElementwise(std::wstring_view name) {
  static constexpr std::pair<std::wstring_view, Op> kFunctions[] = {
      {L"abs", Op::kAbs},   {L"sqrt", Op::kSqrt}, {L"exp", Op::kExp},   {L"ln", Op::kLn},
      {L"log", Op::kLog10}, {L"sin", Op::kSin},   {L"cos", Op::kCos},   {L"tan", Op::kTan},
      {L"asin", Op::kAsin}, {L"acos", Op::kAcos}, {L"atan", Op::kAtan}, {L"sinh", Op::kSinh},
      {L"cosh", Op::kCosh}, {L"tanh", Op::kTanh}, {L"ceil", Op::kCeil}, {L"floor", Op::kFloor}};
  for (const auto& [known, op] : kFunctions)
    if (known == name) return op;
  return std::nullopt;
}

[[noreturn]] void RefusePart(const ParsedText& text, Index node) {
  throw NotDescribable("\"" + utils::ToUtf8(text.GetText(node)) + "\" is no arithmetic of scalars");
}

class Reader {
 public:
  Reader(const CriterionSequence& criteria, const std::vector<std::wstring>& inputs,
         const std::vector<std::wstring>& outputs)
      : criteria_(criteria), states_(criteria.size()) {
    for (std::size_t i = 0; i < inputs.size(); ++i)
      Define(inputs[i], {{Reference(Kind::kInput, i)}, false});
    for (auto& [name, operand] : Responses(outputs)) Define(name, std::move(operand));
    for (std::size_t i = criteria.size(); i-- > 0;) DefineCriterion(i);
  }

  void Run(std::vector<CriterionDescription>& described, std::vector<LeftOut>& left_out) {
    for (std::size_t i = 0; i < criteria_.size(); ++i) Read(i, 0);
    std::vector<std::size_t> positions(criteria_.size());
    for (std::size_t i = 0, next = 0; i < criteria_.size(); ++i)
      positions[i] = states_[i].reason.empty() ? next++ : next;
    for (std::size_t i = 0; i < criteria_.size(); ++i) {
      const auto& [name, criterion] = criteria_[i];
      State& state = states_[i];
      if (!state.reason.empty()) {
        left_out.push_back({utils::ToUtf8(name), state.reason});
        continue;
      }
      Renumber(positions, state.value);
      described.push_back({utils::ToUtf8(name), utils::ToUtf8(criterion.GetExpression()),
                           criterion.IsLimitState(), std::move(state.value)});
    }
  }

 private:
  struct State {
    enum class Phase { kNew, kReading, kDone } phase = Phase::kNew;
    std::string reason;  ///< why it has no tree
    Expression value;    ///< refers to criteria by their positions in criteria_
  };

  /// The responses as texts see them: scalars, and vectors of the elements that have models.
  static std::map<std::wstring, Operand> Responses(const std::vector<std::wstring>& outputs) {
    std::map<std::wstring, Operand> responses;
    for (std::size_t k = 0; k < outputs.size(); ++k) {
      const auto parts = algorithm::datatypes::SplitIndexedName(outputs[k]);
      const auto index = parts.GetIndex();
      if (!parts.has_brackets || !index || *index < 0) {
        responses[outputs[k]] = {{Reference(Kind::kResponse, k)}, false};
        continue;
      }
      Operand& vector = responses[parts.base];
      vector.is_vector = true;
      const auto element = static_cast<std::size_t>(*index);
      if (element >= kMaxElements) {
        vector.elements.assign(kMaxElements + 1, Expression());  // refused where it is used
        continue;
      }
      if (vector.elements.size() <= element) vector.elements.resize(element + 1);
      vector.elements[element] = Reference(Kind::kResponse, k);
    }
    return responses;
  }

  /// A name that cannot be an object, that of a constant for example, keeps its meaning.
  void Define(const std::wstring& name, Operand operand) {
    if (calculator_.IsValidIdentifier(name, true))
      symbols_[&calculator_.GetWorkspace().objects[name]] = std::move(operand);
  }

  void DefineCriterion(std::size_t position) {
    const auto& [name, criterion] = criteria_[position];
    try {
      calculator_.GetWorkspace().texts.Parse(criterion.GetExpression());
      Define(name, {{Reference(Kind::kCriterion, position)}, false});
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {  // no object; why shows when its sides are read
    }
  }

  void Read(std::size_t position, std::size_t chain) {
    State& state = states_[position];
    if (state.phase == State::Phase::kDone) return;
    state.phase = State::Phase::kReading;
    try {
      if (chain > kMaxChain) throw NotDescribable("too many criteria read each other");
      state.value = ReadValue(criteria_[position].second, chain);
      if (DepthOf(state.value) > kMaxDepth) throw NotDescribable("its text nests too deep");
    } catch (const NotDescribable& error) {
      state.reason = error.what();
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception& error) {
      state.reason = utils::ToUtf8(utils::MessageOf(error));
    }
    state.phase = State::Phase::kDone;
  }

  Expression ReadValue(const Criterion& criterion, std::size_t chain) {
    using Description = algorithm::datatypes::CriterionDescription;
    Expression rhs = ReadSide(criterion.GetRhs(), "right", chain);
    switch (criterion.GetType()) {
      case Description::RHS_ANY:
      case Description::RHS:
        return rhs;
      case Description::NEGATIVE_RHS:
        return Apply(Op::kNegate, {std::move(rhs)});
      case Description::RHS_MINUS_LHS:
      case Description::LIMIT_LHS_BELOW_RHS:
        return Apply(Op::kSubtract, {std::move(rhs), ReadSide(criterion.GetLhs(), "left", chain)});
      case Description::LHS_MINUS_RHS_4:
      case Description::LHS_MINUS_RHS_5:
      case Description::LIMIT_LHS_ABOVE_RHS:
        return Apply(Op::kSubtract, {ReadSide(criterion.GetLhs(), "left", chain), std::move(rhs)});
    }
    throw NotDescribable("its type is not known");
  }

  Expression ReadSide(const std::wstring& text, const char* side, std::size_t chain) {
    if (text.empty()) throw NotDescribable(std::string("it has no ") + side + " side");
    const ParsedText& parsed = calculator_.GetWorkspace().texts.Parse(text);
    nodes_ = 0;
    Operand operand = Translate(parsed, parsed.GetRoot(), chain);
    if (operand.is_vector) throw NotDescribable("\"" + utils::ToUtf8(text) + "\" is a vector");
    return std::move(operand.elements.front());
  }

  Operand Translate(const ParsedText& text, Index node, std::size_t chain) {
    if (++nodes_ > kMaxNodes) throw NotDescribable("its text is too long");
    const Index core = text.GetCore(node);
    switch (text.GetRule(core)) {
      case Rule::kConstant:
        return {{NumberOf(text.GetNumber(core))}, false};
      case Rule::kObject:
        return TranslateObject(text.GetObject(core), chain);
      case Rule::kIndex:
        return TranslateIndex(text, core, chain);
      case Rule::kFunction:
        return TranslateFunction(text, core, chain);
      case Rule::kUnary:
        if (text.GetOperator(core) != calculator::Operator::kNegate) RefusePart(text, core);
        return Elementwise(Op::kNegate, Translate(text, text.Child(core, 0), chain));
      case Rule::kSum:
      case Rule::kProduct:
      case Rule::kPower:
        if (text.IsBinary(core)) return TranslateChain(text, core, chain);
        break;
      default:
        break;
    }
    RefusePart(text, core);
  }

  Operand TranslateObject(const Object& object, std::size_t chain) {
    const auto found = symbols_.find(&object);
    if (found == symbols_.end()) {
      const Object* const constant = object.constant;
      if (constant == nullptr || !constant->value.IsScalar() ||
          constant->value.GetScalar().imag() != 0.0)
        throw NotDescribable("\"" + utils::ToUtf8(object.name) +
                             "\" is no input, response, criterion or constant");
      return {{NumberOf(constant->value.GetScalar().real())}, false};
    }
    const Operand& operand = found->second;
    if (operand.elements.size() > kMaxElements)
      throw NotDescribable("\"" + utils::ToUtf8(object.name) + "\" has too many elements");
    for (const Expression& element : operand.elements) {
      if (element.kind == Kind::kNumber)
        throw NotDescribable("not all elements of \"" + utils::ToUtf8(object.name) +
                             "\" have a model");
      if (element.kind == Kind::kCriterion) RequireRead(element.position, chain);
    }
    nodes_ += operand.elements.size();
    return operand;
  }

  void RequireRead(std::size_t position, std::size_t chain) {
    const std::string name = "\"" + utils::ToUtf8(criteria_[position].first) + '"';
    if (states_[position].phase == State::Phase::kReading)
      throw NotDescribable(name + " depends on itself");
    Read(position, chain + 1);
    if (!states_[position].reason.empty())
      throw NotDescribable("it reads " + name + ", which is left out");
  }

  Operand TranslateIndex(const ParsedText& text, Index core, std::size_t chain) {
    if (text.NumChildren(core) != 2) RefusePart(text, core);
    Operand vector = Translate(text, text.Child(core, 0), chain);
    const Index index = text.GetCore(text.Child(core, 1));
    if (!vector.is_vector || text.GetRule(index) != Rule::kConstant) RefusePart(text, core);
    const double number = text.GetNumber(index);
    if (!(number >= 0.0 && number < static_cast<double>(vector.elements.size()) &&
          number == std::floor(number)))
      RefusePart(text, core);
    return {{std::move(vector.elements[static_cast<std::size_t>(number)])}, false};
  }

  Operand TranslateFunction(const ParsedText& text, Index core, std::size_t chain) {
    const std::wstring_view name = text.GetText(core);
    const std::size_t count = text.NumChildren(core);
    const auto elementwise = FindElementwise(name);
    if (elementwise && count == 1)
      return Elementwise(*elementwise, Translate(text, text.Child(core, 0), chain));
    const bool is_extreme = name == L"min" || name == L"max";
    if (!is_extreme && (count != 1 || (name != L"sum" && name != L"mean"))) RefusePart(text, core);
    if (count == 0) RefusePart(text, core);
    std::vector<Expression> arguments;
    for (std::size_t i = 0; i < count; ++i) {
      Operand operand = Translate(text, text.Child(core, i), chain);
      if (count > 1 && operand.is_vector) RefusePart(text, core);
      for (Expression& element : operand.elements) arguments.push_back(std::move(element));
    }
    if (arguments.size() == 1) return {std::move(arguments), false};
    if (is_extreme)
      return {{Apply(name == L"min" ? Op::kMin : Op::kMax, std::move(arguments))}, false};
    const auto n = static_cast<double>(arguments.size());
    Expression total = Apply(Op::kAdd, std::move(arguments));
    if (name == L"sum") return {{std::move(total)}, false};
    return {{Apply(Op::kDivide, {std::move(total), NumberOf(n)})}, false};
  }

  /// A chain of operators nests to the left, as deep as the text is long.
  Operand TranslateChain(const ParsedText& text, Index core, std::size_t chain) {
    std::vector<Index> links;
    Index left = core;
    for (; text.IsBinary(left) && IsArithmetic(text.GetOperator(left));
         left = text.GetCore(text.Child(left, 0))) {
      links.push_back(left);
      if (links.size() > kMaxNodes) throw NotDescribable("its text is too long");
    }
    if (links.empty()) RefusePart(text, core);
    Operand result = Translate(text, left, chain);
    bool is_sum = false;  // the result is a sum of this chain, to which terms can be added
    for (; !links.empty(); links.pop_back()) {
      Operand right = Translate(text, text.Child(links.back(), 1), chain);
      const auto op = text.GetOperator(links.back());
      const bool adds = op == calculator::Operator::kAdd || op == calculator::Operator::kSubtract;
      if (!Fits(op, result, right)) RefusePart(text, links.back());
      result = Combine(op, std::move(result), std::move(right), is_sum);
      is_sum = adds;
    }
    return result;
  }

  static bool IsArithmetic(calculator::Operator op) {
    using calculator::Operator;
    return op == Operator::kAdd || op == Operator::kSubtract || op == Operator::kMultiply ||
           op == Operator::kDivide || op == Operator::kPower;
  }

  /// Whether the two combine number by number.
  static bool Fits(calculator::Operator op, const Operand& left, const Operand& right) {
    using calculator::Operator;
    if (!left.is_vector && !right.is_vector) return true;
    if (op == Operator::kAdd || op == Operator::kSubtract)
      return !left.is_vector || !right.is_vector || left.elements.size() == right.elements.size();
    if (op == Operator::kMultiply) return !left.is_vector || !right.is_vector;
    return op == Operator::kDivide && !right.is_vector;
  }

  static Operand Combine(calculator::Operator op, Operand left, Operand right, bool extend) {
    Operand result;
    result.is_vector = left.is_vector || right.is_vector;
    const std::size_t n = std::max(left.elements.size(), right.elements.size());
    for (std::size_t i = 0; i < n; ++i) {
      Expression a = left.elements[left.is_vector ? i : 0];
      Expression b = right.elements[right.is_vector ? i : 0];
      switch (op) {
        case calculator::Operator::kSubtract:
          b = Apply(Op::kNegate, {std::move(b)});  // a - b is a + -b, to the bit
          [[fallthrough]];
        case calculator::Operator::kAdd:
          if (extend)
            a.arguments.push_back(std::move(b));
          else
            a = Apply(Op::kAdd, {std::move(a), std::move(b)});
          break;
        case calculator::Operator::kMultiply:
          a = Apply(Op::kMultiply, {std::move(a), std::move(b)});
          break;
        case calculator::Operator::kDivide:
          a = Apply(Op::kDivide, {std::move(a), std::move(b)});
          break;
        default:
          a = Apply(Op::kPower, {std::move(a), std::move(b)});
      }
      result.elements.push_back(std::move(a));
    }
    return result;
  }

  static Operand Elementwise(Op op, Operand operand) {
    for (Expression& element : operand.elements) element = Apply(op, {std::move(element)});
    return operand;
  }

  static void Renumber(const std::vector<std::size_t>& positions, Expression& expression) {
    if (expression.kind == Kind::kCriterion) expression.position = positions[expression.position];
    for (Expression& argument : expression.arguments) Renumber(positions, argument);
  }

  const CriterionSequence& criteria_;
  CCalculator calculator_;
  std::map<const Object*, Operand> symbols_;
  std::vector<State> states_;
  std::size_t nodes_ = 0;  ///< of the side that is read
};

}  // namespace

void ReadCriteria(const CriterionSequence& criteria, const std::vector<std::wstring>& inputs,
                  const std::vector<std::wstring>& outputs,
                  std::vector<CriterionDescription>& described, std::vector<LeftOut>& left_out) {
  Reader(criteria, inputs, outputs).Run(described, left_out);
}

}  // namespace corvath::exchange
