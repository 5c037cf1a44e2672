#include "calculator/parsed_text.h"

#include "calculator/calculator_exception.h"
#include "calculator/parser.h"

#include <locale.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

namespace corvath::calculator {

namespace {

/// The number that `text`, of the grammar's form, is; NaN beyond the range. Decimal points whatever
/// the locale.
double ToNumber(std::wstring_view text) {
  static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string narrow(text.begin(), text.end());
  const double number = strtod_l(narrow.c_str(), nullptr, classic);
  return std::isinf(number) ? std::numeric_limits<double>::quiet_NaN() : number;
}

Operator FindOperator(std::wstring_view text, std::size_t num_operands) {
  static const struct {
    std::wstring_view text;
    std::size_t num_operands;
    Operator op;
  } kOperators[] = {
      {L"+", 2, Operator::kAdd},        {L"-", 2, Operator::kSubtract},
      {L"-", 1, Operator::kNegate},     {L"*", 2, Operator::kMultiply},
      {L"/", 2, Operator::kDivide},     {L"%", 2, Operator::kModulo},
      {L"^", 2, Operator::kPower},      {L"**", 2, Operator::kPower},
      {L"<", 2, Operator::kLess},       {L">", 2, Operator::kGreater},
      {L"<=", 2, Operator::kLessEqual}, {L">=", 2, Operator::kGreaterEqual},
      {L"==", 2, Operator::kEqual},     {L"!=", 2, Operator::kNotEqual},
      {L"!", 1, Operator::kNot},        {L"&&", 2, Operator::kAnd},
      {L"||", 2, Operator::kOr},
  };
  if (text.size() > 2) return Operator::kNone;
  for (const auto& candidate : kOperators)
    if (candidate.text == text && candidate.num_operands == num_operands) return candidate.op;
  return Operator::kNone;
}

}  // namespace

ParsedText::ParsedText(std::wstring text, SyntaxTree tree, ObjectTable& objects)
    : text_(std::move(text)), tree_(std::move(tree)) {
  meanings_.reserve(tree_.size());
  for (Index node = 0; node < tree_.size(); ++node) {
    meanings_.push_back(Find(node, objects));
    const Rule rule = GetRule(node);
    defines_ = defines_ || rule == Rule::kAssign || rule == Rule::kAssignMacro;
    calls_macros_ = calls_macros_ || rule == Rule::kMacro;
  }
}

ParsedText::Meaning ParsedText::Find(Index node, ObjectTable& objects) const {
  Meaning meaning{node, Operator::kNone, {0.0}};
  switch (GetRule(node)) {
    case Rule::kConstant:
      meaning.number = ToNumber(GetText(node));
      break;
    case Rule::kObject:
      meaning.object = &objects[GetText(node)];
      break;
    case Rule::kFunction:
      meaning.function = FunctionTable::Get().Find(GetText(node));
      break;
    case Rule::kUnary:
    case Rule::kLogical:
    case Rule::kComparison:
    case Rule::kSum:
    case Rule::kProduct:
    case Rule::kPower:
      meaning.op = FindOperator(GetText(node), NumChildren(node));
      if (meaning.op != Operator::kNone) break;
      [[fallthrough]];
    case Rule::kExpression:
    case Rule::kOperand:
    case Rule::kParentheses:
    case Rule::kIndex:
      if (NumChildren(node) == 1) meaning.core = meanings_[Child(node, 0)].core;
      break;
    default:
      break;
  }
  return meaning;
}

void ParseCache::Clear() {
  texts_.clear();
  length_ = 0;
  may_define_ = false;
}

const ParsedText& ParseCache::Parse(std::wstring_view text) {
  std::wstring normal = DeleteBlanks(text);
  if (const auto found = texts_.find(normal); found != texts_.end()) return *found->second;
  if (normal.size() > kMaxTextLength || length_ + normal.size() > max_length_)
    throw CCalculatorException(
        L"Expression texts of more than " +
        std::to_wstring(normal.size() > kMaxTextLength ? kMaxTextLength : max_length_) +
        L" characters");
  ParseResult result = calculator::Parse(normal);
  if (!result.full)
    throw CExpressionPositionException(result.too_deep ? kNestedTooDeep : L"Error while parsing",
                                       std::move(normal), result.stop);
  length_ += normal.size();
  auto parsed =
      std::make_unique<const ParsedText>(std::move(normal), std::move(result.tree), objects_);
  may_define_ = may_define_ || parsed->Defines() ||
                (parsed->CallsMacros() && macros_.FindReach(*parsed).may_define);
  const std::wstring_view key = parsed->GetText();
  return *texts_.emplace(key, std::move(parsed)).first->second;
}

}  // namespace corvath::calculator
