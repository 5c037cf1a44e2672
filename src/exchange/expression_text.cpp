#include "exchange/expression_text.h"

#include "exchange/number_text.h"

namespace corvath::exchange {

std::string ExpressionText::Join(const std::vector<std::string>& texts, const char* between) {
  std::string joined;
  for (const std::string& text : texts) joined += (joined.empty() ? "" : between) + text;
  return joined;
}

std::string ExpressionText::Write(const Expression& expression) {
  using Op = Expression::Operator;
  switch (expression.kind) {
    case Expression::Kind::kNumber:
      return '(' + RealText(expression.number) + ')';
    case Expression::Kind::kInput:
      return Input(expression.position);
    case Expression::Kind::kResponse:
      return Response(expression.position);
    case Expression::Kind::kCriterion:
      return Criterion(expression.position);
    case Expression::Kind::kOperator:
      break;
  }
  std::vector<std::string> arguments;
  for (const Expression& argument : expression.arguments) arguments.push_back(Write(argument));
  switch (expression.op) {
    case Op::kAdd:
      return '(' + Join(arguments, " + ") + ')';
    case Op::kSubtract:
      return '(' + Join(arguments, " - ") + ')';
    case Op::kMultiply:
      return '(' + Join(arguments, " * ") + ')';
    case Op::kNegate:
      return "(-" + Join(arguments, "") + ')';
    case Op::kMin:
    case Op::kMax:
      return Extreme(expression.op, arguments);
    case Op::kLog10:  // as the language of criteria has it
      return '(' + Function(Op::kLn) + '(' + Join(arguments, ", ") + ") * 0.4342944819032518)";
    default:
      return Function(expression.op) + '(' + Join(arguments, ", ") + ')';
  }
}

}  // namespace corvath::exchange
