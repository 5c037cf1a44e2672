#include "calculator/scalar_program.h"

#include "calculator/functions/function_adaptors.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_division.h"
#include "variant/value/complex_parts.h"

#include <cmath>
#include <exception>

namespace corvath::calculator {

namespace {

using Number = std::complex<double>;

bool IsPositiveReal(const Number& z) {
  return z.real() > 0.0 && z.imag() == 0.0 && std::isfinite(z.real());
}

/// C11, G.6.4.2: on the positive axis the real root, the imaginary part as it is.
Number SquareRoot(const Number& z) {
  return IsPositiveReal(z) ? Number(std::sqrt(z.real()), z.imag()) : std::sqrt(z);
}

/// C11, F.10.4.3: hypot(x, 0) is |x|.
Number Magnitude(const Number& z) {
  return z.imag() == 0.0 ? Number(std::abs(z.real())) : Number(std::abs(z));
}

/// The function of the value type for one number.
template <void (*Of)(math::Value&, const math::Value&)>
Number OfNumber(const Number& z) {
  math::Value result;
  Of(result, math::Value(z));
  return result.GetScalar();
}

struct Entry {
  void (*run)(FunctionCall&, math::Value&);
  Number (*function)(const Number&);
};

Number (*FindFunction(const Function& function))(const Number&) {
  namespace fn = math::functions;
  static constexpr Entry kEntries[] = {
      {Unary<fn::sqrt>, SquareRoot},           {Unary<fn::abs>, Magnitude},
      {Unary<fn::exp>, OfNumber<fn::exp>},     {Unary<fn::ln>, OfNumber<fn::ln>},
      {Unary<fn::log>, OfNumber<fn::log>},     {Unary<fn::sin>, OfNumber<fn::sin>},
      {Unary<fn::cos>, OfNumber<fn::cos>},     {Unary<fn::tan>, OfNumber<fn::tan>},
      {Unary<fn::tanh>, OfNumber<fn::tanh>},   {Unary<fn::atan>, OfNumber<fn::atan>},
      {Unary<fn::real>, OfNumber<fn::real>},   {Unary<fn::imag>, OfNumber<fn::imag>},
      {Unary<fn::floor>, OfNumber<fn::floor>}, {Unary<fn::ceil>, OfNumber<fn::ceil>},
  };
  for (const Entry& entry : kEntries)
    if (entry.run == function.run) return entry.function;
  return nullptr;
}

}  // namespace

ScalarProgram::ScalarProgram(const ParsedText& text) {
  if (!Append(text, text.GetRoot(), 0)) steps_.clear();
}

bool ScalarProgram::Append(const ParsedText& text, Index node, int used) {
  if (used >= kStackSize || steps_.size() >= kMaxSteps) return false;
  const Index core = text.GetCore(node);
  switch (text.GetRule(core)) {
    case Rule::kConstant:
      steps_.push_back({Code::kNumber, text.GetNumber(core)});
      return !std::isnan(text.GetNumber(core));
    case Rule::kObject:
      steps_.push_back({Code::kObject, 0.0, &text.GetObject(core)});
      return true;
    case Rule::kFunction: {
      const Function* const function = text.GetFunction(core);
      if (!function || text.NumChildren(core) != 1) return false;
      const auto of_number = FindFunction(*function);
      // Functions nest as deep as the stack is, too.
      if (!of_number || !Append(text, text.Child(core, 0), used + 1)) return false;
      steps_.push_back({Code::kFunction, 0.0, nullptr, of_number});
      return true;
    }
    case Rule::kUnary:
      if (text.GetOperator(core) != Operator::kNegate ||
          !Append(text, text.Child(core, 0), used + 1))
        return false;
      steps_.push_back({Code::kNegate});
      return true;
    case Rule::kSum:
    case Rule::kProduct:
    case Rule::kPower:
      return text.IsBinary(core) && AppendChain(text, core, used);
    default:
      return false;
  }
}

bool ScalarProgram::AppendChain(const ParsedText& text, Index core, int used) {
  // A chain of operators nests to the left, as deep as the text is long.
  std::vector<Index> chain;
  Index left = core;
  do {
    chain.push_back(left);
    left = text.GetCore(text.Child(left, 0));
  } while (text.IsBinary(left) && chain.size() < kMaxSteps);
  if (text.IsBinary(left) || !Append(text, left, used + 1)) return false;
  for (; !chain.empty(); chain.pop_back()) {
    const Index right = text.GetCore(text.Child(chain.back(), 1));
    const Operator op = text.GetOperator(chain.back());
    if (op == Operator::kPower && text.GetRule(right) == Rule::kConstant &&
        text.GetNumber(right) == 2.0) {
      steps_.push_back({Code::kSquare});
      continue;
    }
    if (!Append(text, right, used + 2)) return false;
    switch (op) {
      case Operator::kAdd:
        steps_.push_back({Code::kAdd});
        break;
      case Operator::kSubtract:
        steps_.push_back({Code::kSubtract});
        break;
      case Operator::kMultiply:
        steps_.push_back({Code::kMultiply});
        break;
      case Operator::kDivide:
        steps_.push_back({Code::kDivide});
        break;
      case Operator::kPower:
        steps_.push_back({Code::kPower});
        break;
      default:
        return false;
    }
  }
  return true;
}

std::optional<Number> ScalarProgram::Run() const try {
  // Numbers of a stack whose top is apart. Not constructed, for time.
  struct Plain {
    double real, imag;
  };
  Plain stack[kStackSize + 2];
  Plain* below = stack;
  Number top;
  const auto push = [&](const Number& number) {
    *below++ = {top.real(), top.imag()};
    top = number;
  };
  const auto pop = [&] {
    --below;
    return Number(below->real, below->imag);
  };
  for (const Step& step : steps_) {
    switch (step.code) {
      case Code::kNumber:
        push(step.number);
        break;
      case Code::kObject: {
        const Object* const object = step.object->Resolve();
        if (!object || !object->expression.empty() || !object->value.IsScalar())
          return std::nullopt;
        push(object->value.GetScalar());
        break;
      }
      case Code::kAdd:
        top = pop() + top;
        break;
      case Code::kSubtract:
        top = pop() - top;
        break;
      case Code::kMultiply:
        top = pop() * top;
        break;
      case Code::kDivide:
        top = math::Quotient(pop(), top);
        break;
      case Code::kSquare:
        // Numbers close to 0 have their own powers.
        if (top.imag() == 0.0 && std::abs(top.real()) > 1e-3 && std::abs(top.real()) < 1e100)
          top = top.real() * top.real();
        else
          top = math::Power(top, 2.0);
        break;
      case Code::kPower: {
        const Number exponent = top;
        top = math::Power(pop(), exponent);
        break;
      }
      case Code::kNegate:
        top *= Number(-1.0);
        break;
      case Code::kFunction:
        top = step.function(top);
        break;
    }
  }
  return top;
} catch (const std::exception&) {
  return std::nullopt;
}

}  // namespace corvath::calculator
