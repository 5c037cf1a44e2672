#include "calculator/scalar_program.h"

#include "calculator/functions/function_adaptors.h"
#include "foundation/closeness.h"
#include "foundation/constants.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_division.h"
#include "variant/value/complex_parts.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>

namespace corvath::calculator {

namespace {

using Number = std::complex<double>;

constexpr double kMaxElements = 1e9;  ///< more than any vector has

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

/// Of one row: the defect is NaN if what `of` gives is not real, or if it raises.
template <class Of>
double RealOf(const Of& of, double& defect) try {
  const Number number = of();
  if (number.imag() != 0.0) defect = math::kNaN;
  return number.real();
} catch (const std::bad_alloc&) {
  throw;
} catch (const std::exception&) {
  defect = math::kNaN;
  return 0.0;
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

ScalarProgram::ScalarProgram(const ParsedText& text, const MacroTable& macros) {
  if (!Append(text, text.GetRoot(), 0, macros)) steps_.clear();
}

bool ScalarProgram::Append(const ParsedText& text, Index node, int used, const MacroTable& macros) {
  if (used >= kStackSize || steps_.size() >= kMaxSteps) return false;
  const Index core = text.GetCore(node);
  switch (text.GetRule(core)) {
    case Rule::kConstant:
      steps_.push_back({Code::kNumber, text.GetNumber(core)});
      return !std::isnan(text.GetNumber(core));
    case Rule::kObject:
      steps_.push_back({Code::kObject, 0.0, &text.GetObject(core)});
      return true;
    case Rule::kIndex: {
      if (text.NumChildren(core) != 2) return false;
      const Index operand = text.GetCore(text.Child(core, 0));
      const Index index = text.GetCore(text.Child(core, 1));
      if (text.GetRule(operand) != Rule::kObject || text.GetRule(index) != Rule::kConstant)
        return false;
      const double element = text.GetNumber(index);
      if (!(element < kMaxElements) || element != std::floor(element)) return false;
      steps_.push_back(
          {Code::kObject, 0.0, &text.GetObject(operand), static_cast<std::size_t>(element)});
      return true;
    }
    case Rule::kFunction: {
      const Function* const function = text.GetFunction(core);
      if (!function || text.NumChildren(core) != 1) return false;
      const auto of_number = FindFunction(*function);
      // Functions nest as deep as the stack is, too.
      if (!of_number || !Append(text, text.Child(core, 0), used + 1, macros)) return false;
      steps_.push_back({Code::kFunction, 0.0, nullptr, kWhole, of_number});
      return true;
    }
    case Rule::kMacro: {  // nest as deep, too
      const ParsedText* const expansion = macros.FindExpansion(text, core);
      return expansion && Append(*expansion, expansion->GetRoot(), used + 1, macros);
    }
    case Rule::kUnary:
      if (text.GetOperator(core) != Operator::kNegate ||
          !Append(text, text.Child(core, 0), used + 1, macros))
        return false;
      steps_.push_back({Code::kNegate});
      return true;
    case Rule::kSum:
    case Rule::kProduct:
    case Rule::kPower:
      return text.IsBinary(core) && AppendChain(text, core, used, macros);
    default:
      return false;
  }
}

bool ScalarProgram::AppendChain(const ParsedText& text, Index core, int used,
                                const MacroTable& macros) {
  // A chain of operators nests to the left, as deep as the text is long.
  std::vector<Index> chain;
  Index left = core;
  do {
    chain.push_back(left);
    left = text.GetCore(text.Child(left, 0));
  } while (text.IsBinary(left) && chain.size() < kMaxSteps);
  if (text.IsBinary(left) || !Append(text, left, used + 1, macros)) return false;
  for (; !chain.empty(); chain.pop_back()) {
    const Index right = text.GetCore(text.Child(chain.back(), 1));
    const Operator op = text.GetOperator(chain.back());
    if (op == Operator::kPower && text.GetRule(right) == Rule::kConstant &&
        text.GetNumber(right) == 2.0) {
      steps_.push_back({Code::kSquare});
      continue;
    }
    if (!Append(text, right, used + 2, macros)) return false;
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

std::optional<Number> ScalarProgram::Step::GetNumber() const {
  const Object* const now = object->Resolve();
  if (!now || !now->expression.empty()) return std::nullopt;
  const math::Value& value = now->value;
  if (element == kWhole) return value.IsScalar() ? std::optional(value.GetScalar()) : std::nullopt;
  if (!value.IsVector() || element >= value.Size()) return std::nullopt;
  return value.GetVector()(element);
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
        const auto number = step.GetNumber();
        if (!number) return std::nullopt;
        push(*number);
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

/// With real operands the real part of each operator is the real operator's, and depends on the sign
/// of a zero imaginary part on the negative axis alone, where roots and logarithms are not real.
bool ScalarProgram::RunRows(const Columns& columns, std::size_t rows, double* work, double* results,
                            double* defects) const {
  double* top = work - kMaxRows;
  const auto each = [&](const auto& of_row) {
    for (std::size_t i = 0; i < rows; ++i) {
      top[i] = of_row(i);
      defects[i] += 0.0 * top[i];
    }
  };
  const auto combine = [&](const auto& of_numbers) {
    const double* const right = top;
    top -= kMaxRows;
    each([&](std::size_t i) { return of_numbers(top[i], right[i]); });
  };
  for (const Step& step : steps_) {
    switch (step.code) {
      case Code::kNumber:
        top += kMaxRows;
        std::fill_n(top, rows, step.number);
        break;
      case Code::kObject: {
        top += kMaxRows;
        const auto found = columns.find({step.object, step.element});
        if (found != columns.end()) {
          each([&](std::size_t i) { return found->second[i]; });
          break;
        }
        const auto number = step.GetNumber();
        if (!number || number->imag() != 0.0) return false;
        each([&](std::size_t) { return number->real(); });
        break;
      }
      case Code::kAdd:
        combine([](double a, double b) { return a + b; });
        break;
      case Code::kSubtract:
        combine([](double a, double b) { return a - b; });
        break;
      case Code::kMultiply:
        combine([](double a, double b) { return a * b; });
        break;
      case Code::kDivide:  // by 0 is not finite
        combine([](double a, double b) { return a / b; });
        break;
      case Code::kSquare:  // numbers close to 0 count as 0
        each([&](std::size_t i) { return std::abs(top[i]) < math::kEps ? 0.0 : top[i] * top[i]; });
        break;
      case Code::kPower: {
        const double* const right = top;
        top -= kMaxRows;
        each([&](std::size_t i) {
          return RealOf([&] { return math::Power(top[i], right[i]); }, defects[i]);
        });
        break;
      }
      case Code::kNegate:
        each([&](std::size_t i) { return -top[i]; });
        break;
      case Code::kFunction:
        if (step.function == SquareRoot)
          each([&](std::size_t i) { return std::sqrt(top[i]); });  // NaN below 0
        else if (step.function == Magnitude)
          each([&](std::size_t i) { return std::abs(top[i]); });
        else
          each([&](std::size_t i) {
            return RealOf([&] { return step.function(top[i]); }, defects[i]);
          });
        break;
    }
  }
  std::copy_n(top, rows, results);
  return true;
}

}  // namespace corvath::calculator
