#include "exchange/c_criteria.h"

#include "exchange/c_text.h"
#include "exchange/expression_text.h"

namespace corvath::exchange {

namespace {

class CExpression : public ExpressionText {
 public:
  CExpression(const CNames& names, std::set<std::string>& needed)
      : names_(names), needed_(needed) {}

 protected:
  std::string Input(std::size_t position) override { return CNames::Array("inputs", position); }
  std::string Response(std::size_t position) override { return CNames::Array("outputs", position); }
  std::string Criterion(std::size_t position) override {
    return names_.Criterion(position) + "(inputs, outputs)";
  }

  std::string Function(Expression::Operator op) override {
    using Op = Expression::Operator;
    switch (op) {
      case Op::kDivide:
        return Helper("quotient");
      case Op::kPower:
        return Helper("power");
      case Op::kLn:
        return "log";
      case Op::kAbs:
        return "fabs";
      default:
        return GetOperatorName(op);
    }
  }

  std::string Extreme(Expression::Operator op, const std::vector<std::string>& numbers) override {
    return Helper(op == Expression::Operator::kMin ? "smallest" : "largest") +
           "((const double[]){" + Join(numbers, ", ") + "}, " + std::to_string(numbers.size()) +
           ')';
  }

 private:
  std::string Helper(const char* name) {
    needed_.insert(name);
    return names_.Own(name);
  }

  const CNames& names_;
  std::set<std::string>& needed_;
};

}  // namespace

std::string CCriteria(const ProjectDescription& project, const CNames& names,
                      std::set<std::string>& needed) {
  if (project.criteria.empty()) return {};
  CExpression expressions(names, needed);
  const std::string parameters = '(' + names.Inputs() + ", " + names.Outputs();
  std::string text;
  std::string all =
      "void " + names.Own("criteria") + parameters + ",\n    " + names.NewCriteria() + ")\n{\n";
  for (std::size_t c = 0; c < project.criteria.size(); ++c) {
    const CriterionDescription& criterion = project.criteria[c];
    text += "/* " + ShownName(criterion.name) + ": " + ShownName(criterion.text) + " */\ndouble " +
            names.Criterion(c) + parameters + ")\n{\n  (void)inputs;\n  (void)outputs;\n  return " +
            expressions.Write(criterion.value) + ";\n}\n\n";
    all +=
        "  " + CNames::Array("criteria", c) + " = " + names.Criterion(c) + "(inputs, outputs);\n";
  }
  return text + all + "}\n\n";
}

}  // namespace corvath::exchange
