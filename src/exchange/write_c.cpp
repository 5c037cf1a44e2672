#include "exchange/write_c.h"

#include "exchange/c_helpers.h"
#include "exchange/c_text.h"
#include "exchange/identifiers.h"
#include "exchange/model_reader.h"
#include "exchange/number_text.h"
#include "foundation/build_version.h"

#include <cmath>
#include <set>

namespace corvath::exchange {

namespace {

using std::to_string;

constexpr const char* kLargest = "1.7976931348623157e+308";
/// What every compiler takes as one string.
constexpr std::size_t kMaxString = 4000;

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

/// The name in quotation marks, for a comment.
std::string Shown(const std::string& name) {
  constexpr std::size_t kMaxShown = 100;
  const std::string text = CommentText(name);
  if (text.size() <= kMaxShown) return '"' + text + '"';
  std::size_t end = kMaxShown;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xc0) == 0x80) --end;
  return '"' + text.substr(0, end) + "\"...";
}

/// Numbers of an initialiser, in lines.
template <class Numbers>
std::string List(const Numbers& numbers, const std::string& indent) {
  constexpr std::size_t kLine = 96;
  std::string text;
  std::string line = indent;
  for (std::size_t i = 0; i < static_cast<std::size_t>(numbers.size()); ++i) {
    const std::string number = RealText(numbers[static_cast<decltype(numbers.size())>(i)]) +
                               (i + 1 < static_cast<std::size_t>(numbers.size()) ? "," : "");
    if (line.size() + number.size() + 1 > kLine && line.size() > indent.size()) {
      text += line + '\n';
      line = indent;
    }
    line += (line.size() > indent.size() ? " " : "") + number;
  }
  return text + line + '\n';
}

class Writer {
 public:
  Writer(const ProjectDescription& project, const std::string& prefix)
      : project_(project), prefix_(prefix), upper_(Upper(prefix)) {
    Identifiers responses;
    for (const auto& response : project.responses)
      response_ids_.push_back(responses.Make(response.name));
    Identifiers criteria;
    for (const auto& criterion : project.criteria)
      criterion_ids_.push_back(criteria.Make(criterion.name));
  }

  std::string Write() {
    std::string functions;
    for (std::size_t k = 0; k < project_.responses.size(); ++k) functions += Response(k);
    functions += PredictAll();
    functions += Criteria();
    std::string text = Head();
    text += "#ifndef " + upper_ + "_DECLARATIONS\n\n#include <math.h>\n\n";
    text += Tables();
    for (const CHelper& helper : kCHelpers)
      if (needed_.count(helper.name) > 0) text += Replaced(helper.text) + '\n';
    return text + functions + "#endif /* " + upper_ + "_DECLARATIONS */\n";
  }

 private:
  std::size_t NumInputs() const { return project_.inputs.size(); }

  std::string Replaced(std::string_view text) const {
    std::string replaced;
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (text[i] != '@') {
        replaced += text[i];
      } else if (i + 1 < text.size() && text[i + 1] == '@') {
        replaced += upper_;
        ++i;
      } else {
        replaced += prefix_;
      }
    }
    return replaced;
  }

  std::string Helper(const char* name) {
    needed_.insert(name);
    return prefix_ + '_' + name;
  }

  std::string Inputs() const { return "const double inputs[" + to_string(NumInputs()) + ']'; }
  std::string Outputs(const char* qualifier) const {
    return qualifier + ("double outputs[" + to_string(project_.responses.size())) + ']';
  }
  std::string PredictName(std::size_t k) const { return prefix_ + "_predict_" + response_ids_[k]; }
  std::string GradientName(std::size_t k) const {
    return prefix_ + "_gradient_" + response_ids_[k];
  }
  std::string CriterionName(std::size_t c) const {
    return prefix_ + "_criterion_" + criterion_ids_[c];
  }

  std::string Head() const {
    std::string text = "/* Models of the project " + Shown(project_.name) +
                       " in C99, written by zelsolver " + utils::GetBuildVersion().text + ".\n" +
                       (project_.signature.empty() ? "" : " * SHA-512 of the project:\n * ") +
                       project_.signature.substr(0, 64) +
                       (project_.signature.empty() ? "" : "\n * ") +
                       (project_.signature.empty() ? "" : project_.signature.substr(64)) + "\n *\n";
    text +=
        " * Nothing is allocated, nothing is kept, nothing is printed: threads may call at once. "
        "With\n * " +
        upper_ + "_DECLARATIONS defined this file only declares, as a header.\n *\n";
    for (std::size_t i = 0; i < NumInputs(); ++i) {
      const InputDescription& input = project_.inputs[i];
      text += " * inputs[" + to_string(i) + "]: " + Shown(input.name);
      if (!input.unit.empty()) text += ", in " + Shown(input.unit);
      if (std::isfinite(input.lower) && std::isfinite(input.upper))
        text += ", " + NumberText(input.lower) + " to " + NumberText(input.upper);
      text += '\n';
    }
    for (std::size_t k = 0; k < project_.responses.size(); ++k)
      text += " * outputs[" + to_string(k) + "]: " + Shown(project_.responses[k].name) + ", " +
              CommentText(project_.responses[k].model_name) + '\n';
    for (std::size_t c = 0; c < project_.criteria.size(); ++c)
      text += " * criteria[" + to_string(c) + "]: " + Shown(project_.criteria[c].name) +
              (project_.criteria[c].is_limit ? ", a limit, kept when not negative" : "") + '\n';
    for (const LeftOut& entry : project_.criteria_left_out)
      text += " * Not here: the criterion " + Shown(entry.name) + ": " + CommentText(entry.reason) +
              '\n';
    return text + " */\n\n" + Declarations();
  }

  std::string Declarations() const {
    const std::string guard = upper_ + "_DECLARED";
    std::string text = "#ifndef " + guard + "\n#define " + guard + "\n\nenum {\n  " + upper_ +
                       "_NUM_INPUTS = " + to_string(NumInputs()) + ",\n  " + upper_ +
                       "_NUM_OUTPUTS = " + to_string(project_.responses.size()) + ",\n  " + upper_ +
                       "_NUM_CRITERIA = " + to_string(project_.criteria.size()) + "\n};\n\n";
    text += "#ifdef __cplusplus\nextern \"C\" {\n#endif\n\n";
    text +=
        "/* Names, UTF-8, and the range of the designs; without range -DBL_MAX to DBL_MAX. */\n";
    const auto declare_names = [&](const char* what, std::size_t n) {
      if (n > 0)
        text +=
            "extern const char *const " + prefix_ + '_' + what + "_names[" + to_string(n) + "];\n";
    };
    declare_names("input", NumInputs());
    declare_names("output", project_.responses.size());
    declare_names("criterion", project_.criteria.size());
    for (const char* bound : {"lower", "upper"})
      text +=
          "extern const double " + prefix_ + '_' + bound + '[' + to_string(NumInputs()) + "];\n";
    text +=
        "\n/* 1 if all inputs are in the range of the designs, else 0. Elsewhere predictions\n"
        "   extrapolate. */\nint " +
        prefix_ + "_in_range(" + Inputs() + ");\n\n/* All responses. */\nvoid " + prefix_ +
        "_predict(" + Inputs() + ", " + Outputs("") +
        ");\n\n/* One response each; then its derivatives by the inputs, central differences\n"
        "   over 1e-4 of the range of the designs to each side. */\n";
    for (std::size_t k = 0; k < project_.responses.size(); ++k) {
      text += "double " + PredictName(k) + '(' + Inputs() + ");\n";
      if (!project_.responses[k].gradient_steps.empty())
        text += "void " + GradientName(k) + '(' + Inputs() + ", double gradient[" +
                to_string(NumInputs()) + "]);\n";
    }
    if (!project_.criteria.empty()) {
      text += "\n/* The criteria, from the inputs and what they predict: all, and each. */\nvoid " +
              prefix_ + "_criteria(" + Inputs() + ", " + Outputs("const ") +
              ",\n    double criteria[" + to_string(project_.criteria.size()) + "]);\n";
      for (std::size_t c = 0; c < project_.criteria.size(); ++c)
        text += "double " + CriterionName(c) + '(' + Inputs() + ", " + Outputs("const ") + ");\n";
    }
    return text + "\n#ifdef __cplusplus\n}\n#endif\n\n#endif /* " + guard + " */\n\n";
  }

  template <class Entries>
  std::string Names(const char* what, const Entries& entries) const {
    if (entries.empty()) return {};
    std::string text = "const char *const " + prefix_ + '_' + what + "_names[" +
                       to_string(entries.size()) + "] = {\n";
    for (std::size_t i = 0; i < entries.size(); ++i) {
      const std::string literal = CString(entries[i].name);
      if (literal.size() > kMaxString)
        throw NotDescribable("a name is longer than a string of C: " + Shown(entries[i].name));
      text += "  " + literal + (i + 1 < entries.size() ? ",\n" : "\n");
    }
    return text + "};\n";
  }

  std::string Tables() const {
    std::string text = Names("input", project_.inputs) + Names("output", project_.responses) +
                       Names("criterion", project_.criteria);
    for (const bool is_lower : {true, false}) {
      text += "const double " + prefix_ + (is_lower ? "_lower[" : "_upper[") +
              to_string(NumInputs()) + "] = {\n";
      for (std::size_t i = 0; i < NumInputs(); ++i) {
        const double bound = is_lower ? project_.inputs[i].lower : project_.inputs[i].upper;
        text += "  " +
                (std::isfinite(bound) ? RealText(bound)
                                      : (is_lower ? "-" : "") + std::string(kLargest)) +
                (i + 1 < NumInputs() ? ",\n" : "\n");
      }
      text += "};\n";
    }
    return text + "\nint " + prefix_ + "_in_range(" + Inputs() +
           ")\n{\n  int j;\n  for (j = 0; j < " + upper_ +
           "_NUM_INPUTS; ++j)\n    if (inputs[j] < " + prefix_ +
           "_lower[j] - 1e-8 || inputs[j] > " + prefix_ +
           "_upper[j] + 1e-8)\n      return 0;\n  return 1;\n}\n\n";
  }

  std::string Table(const char* what, std::size_t k) const {
    return prefix_ + '_' + what + '_' + to_string(k);
  }

  template <class Numbers>
  std::string NumberTable(const std::string& name, const Numbers& numbers) const {
    return "static const double " + name + '[' + to_string(numbers.size()) + "] = {\n" +
           List(numbers, "  ") + "};\n";
  }

  std::string SupportTables(const ResponseModel& model, std::size_t k) const {
    const auto n = static_cast<std::size_t>(model.points.rows());
    std::string text = "static const double " + Table("points", k) + '[' + to_string(n) + "][" +
                       to_string(model.inputs.size()) + "] = {\n";
    for (Eigen::Index i = 0; i < model.points.rows(); ++i) {
      const Eigen::VectorXd point = model.points.row(i);
      text += "  {\n" + List(point, "    ") + "  }" + (i + 1 < model.points.rows() ? ",\n" : "\n");
    }
    text += "};\n" + NumberTable(Table("values", k), model.values);
    if (model.kernel.factors.size() > 1)
      text += NumberTable(Table("factors", k), model.kernel.factors);
    return text;
  }

  static std::string PowerText(const Power& power, const char* point) {
    const std::string u = std::string(point) + '[' + to_string(power.input) + ']';
    if (power.exponent == 1) return u;
    if (power.exponent == 2) return '(' + u + " * " + u + ')';
    return "pow(" + u + ", " + to_string(power.exponent) + ".0)";
  }

  static std::string Coordinates(const ResponseModel& model) {
    std::string text;
    for (std::size_t j = 0; j < model.inputs.size(); ++j)
      text += "  u[" + to_string(j) + "] = inputs[" + to_string(model.inputs[j]) + "] * " +
              RealText(model.scale[j]) + " + " + RealText(model.offset[j]) + ";\n";
    return text.empty() ? "  (void)inputs;\n" : text;
  }

  /// The weight of support point i.
  std::string Weight(const ResponseModel& model, std::size_t k) {
    const std::string n = to_string(model.inputs.size());
    const std::string point = Table("points", k) + "[i]";
    if (model.kernel.factors.size() > 1)
      return "exp(" + Helper("scaled") + "(u, " + point + ", " + Table("factors", k) + ", " + n +
             "))";
    const std::string squared = Helper("squared") + "(u, " + point + ", " + n + ')';
    switch (model.kernel.kind) {
      case Kernel::Kind::kExponential:
        return "exp(" + squared + " * " + RealText(model.kernel.factors.front()) + ')';
      case Kernel::Kind::kRegularised:
        return Helper("regularised") + '(' + squared + ", " +
               RealText(model.kernel.squared_radius) + ')';
      case Kernel::Kind::kNodal:
        return "exp(" + squared + " * " + RealText(model.kernel.factors.front()) + " / nearest)";
    }
    return {};
  }

  /// Declarations and the first statement of what a nodal kernel needs.
  std::string NearestDeclaration(const ResponseModel& model) const {
    if (model.kernel.kind != Kernel::Kind::kNodal) return {};
    return "  double nearest, heap[" + to_string(model.kernel.count) + "];\n";
  }
  std::string Nearest(const ResponseModel& model, std::size_t k) {
    if (model.kernel.kind != Kernel::Kind::kNodal) return {};
    Helper("squared");
    return "  nearest = " + Helper("nearest") + "(u, &" + Table("points", k) + "[0][0], " +
           to_string(model.points.rows()) + ", " + to_string(model.inputs.size()) + ", " +
           to_string(model.kernel.count) + ", heap);\n";
  }

  std::string Loop(const ResponseModel& model) const {
    return "  for (i = 0; i < " + to_string(model.points.rows()) + "; ++i) {\n";
  }

  std::string Polynomial(const ResponseModel& model) const {
    std::string text = "  v = " + RealText(model.constant) + ";\n";
    std::size_t next = 0;
    for (const Power& power : model.powers)
      text +=
          "  v += " + RealText(model.coefficients[next++]) + " * " + PowerText(power, "u") + ";\n";
    for (const Product& product : model.products)
      text += "  v += " + RealText(model.coefficients[next++]) + " * (u[" +
              to_string(product.first) + "] * u[" + to_string(product.second) + "]);\n";
    return text;
  }

  std::string Kriging(const ResponseModel& model, std::size_t k) {
    return Nearest(model, k) + "  v = 0.0;\n" + Loop(model) + "    v += " + Table("values", k) +
           "[i] * " + Weight(model, k) + ";\n  }\n  v += " + RealText(model.constant) + ";\n";
  }

  std::string Splines(const ResponseModel& model, std::size_t k) {
    std::string text = "  v = 0.0;\n";
    for (std::size_t j = 0; j < model.inputs.size(); ++j)
      text += "  v += u[" + to_string(j) + "] * " + RealText(model.coefficients[j]) + ";\n";
    return text + "  v += " + RealText(model.constant) + ";\n" + Loop(model) +
           "    w = " + Helper("squared") + "(u, " + Table("points", k) + "[i], " +
           to_string(model.inputs.size()) +
           ");\n    if (w != 0.0)\n      v += " + Table("values", k) +
           "[i] * (0.5 * w * log(w));\n  }\n";
  }

  std::string Average(const ResponseModel& model, std::size_t k) {
    return Nearest(model, k) + "  v = 0.0;\n  sum = 0.0;\n" + Loop(model) +
           "    w = " + Weight(model, k) + ";\n    v += w * " + Table("values", k) +
           "[i];\n    sum += w;\n  }\n  v /= sum;\n";
  }

  std::string Basis(const ResponseModel& model, std::size_t k) const {
    std::string text = "static void " + Table("basis", k) + "(const double *u, double *basis)\n{\n";
    if (model.powers.empty()) text += "  (void)u;\n";
    text += "  basis[0] = 1.0;\n";
    for (std::size_t t = 0; t < model.powers.size(); ++t)
      text += "  basis[" + to_string(t + 1) + "] = " + PowerText(model.powers[t], "u") + ";\n";
    return text + "}\n\n";
  }

  static bool IsConstant(const ResponseModel& model) {
    return (model.values.array() == model.values(0)).all();
  }

  /// The library takes no system for values that are all equal, but asks for points in reach too.
  std::string LocalFit(const ResponseModel& model, std::size_t k) {
    const std::string p = to_string(model.powers.size() + 1);
    std::string text = Nearest(model, k) + "  reach = 0;\n";
    const bool constant = IsConstant(model);
    if (!constant)
      text += "  for (i = 0; i < " + p + " * " + p + "; ++i)\n    normal[i] = 0.0;\n" +
              "  for (i = 0; i < " + p + "; ++i)\n    right[i] = 0.0;\n";
    text += Loop(model) + "    w = " + Weight(model, k) + ";\n    reach += w > 1e-5;\n";
    if (!constant)
      text += "    if (w == 0.0)\n      continue;\n    " + Table("basis", k) + '(' +
              Table("points", k) + "[i], basis);\n    " + Helper("add") + '(' + p + ", w, " +
              Table("values", k) + "[i], basis, normal, right);\n";
    text += "  }\n  if (reach < " + p + ")\n    return NAN;\n";
    if (constant) return text + "  v = " + Table("values", k) + "[0];\n";
    return text + "  " + Helper("solve") + '(' + p +
           ", normal, right, solution, work, order);\n  " + Table("basis", k) +
           "(u, basis);\n  v = 0.0;\n  for (i = 0; i < " + p +
           "; ++i)\n    v += basis[i] * solution[i];\n";
  }

  static std::string Back(const std::vector<BackStep>& steps) {
    std::string text;
    for (const BackStep& step : steps) {
      if (step.kind == BackStep::Kind::kScale) {
        text += "  v = v / " + RealText(step.scale) + " + " + RealText(step.offset) + ";\n";
      } else if (step.kind == BackStep::Kind::kLimits) {
        if (std::isfinite(step.lower))
          text +=
              "  if (v < " + RealText(step.lower) + ")\n    v = " + RealText(step.lower) + ";\n";
        if (std::isfinite(step.upper))
          text +=
              "  if (v > " + RealText(step.upper) + ")\n    v = " + RealText(step.upper) + ";\n";
      } else if (step.k == 0) {
        text += "  v = exp(v);\n";
      } else if (step.k == 1) {
        text += "  v += 1.0;\n";
      } else {
        text += "  v = v * " + RealText(1.0 / static_cast<double>(step.k)) + " + 1.0;\n";
        text += step.k == 2 ? "  v *= v;\n"
                            : "  v = pow(v, " + RealText(static_cast<double>(step.k)) + ");\n";
      }
    }
    return text;
  }

  std::string Response(std::size_t k) {
    const ResponseDescription& response = project_.responses[k];
    const ResponseModel& model = response.model;
    const bool is_fit = model.family == Family::kMovingLeastSquares && !model.is_average;
    std::string tables = model.family == Family::kPolynomial ? "" : SupportTables(model, k);
    if (is_fit && !IsConstant(model)) tables += Basis(model, k);
    std::string body;
    std::string locals = model.inputs.empty()
                             ? "  double v;\n"
                             : "  double v, u[" + to_string(model.inputs.size()) + "];\n";
    if (model.family != Family::kPolynomial) locals += "  int i;\n";
    switch (model.family) {
      case Family::kPolynomial:
        body = Polynomial(model);
        break;
      case Family::kKriging:
        locals += NearestDeclaration(model);
        body = Kriging(model, k);
        break;
      case Family::kThinPlateSplines:
        locals += "  double w;\n";
        body = Splines(model, k);
        break;
      case Family::kMovingLeastSquares:
        locals += NearestDeclaration(model) + "  double w;\n";
        locals += is_fit ? FitLocals(model) : "  double sum;\n";
        body = is_fit ? LocalFit(model, k) : Average(model, k);
        break;
    }
    std::string text = "/* " + Shown(response.name) + ": " + CommentText(response.model_name) +
                       " */\n" + tables + "double " + PredictName(k) + '(' + Inputs() + ")\n{\n" +
                       locals + Coordinates(model) + body + Back(model.back) + "  return v;\n}\n\n";
    if (response.gradient_steps.empty()) return text;
    return text + "void " + GradientName(k) + '(' + Inputs() + ", double gradient[" +
           to_string(NumInputs()) + "])\n{\n  static const double steps[" + to_string(NumInputs()) +
           "] = {\n" + List(response.gradient_steps, "    ") + "  };\n  " + Helper("differences") +
           '(' + PredictName(k) + ", inputs, steps, gradient);\n}\n\n";
  }

  static std::string FitLocals(const ResponseModel& model) {
    if (IsConstant(model)) return "  int reach;\n";
    const std::string p = to_string(model.powers.size() + 1);
    const std::string pp = to_string((model.powers.size() + 1) * (model.powers.size() + 1));
    return "  double basis[" + p + "], right[" + p + "], solution[" + p + "], normal[" + pp +
           "], work[" + pp + "];\n  int reach, order[" + p + "];\n";
  }

  std::string PredictAll() const {
    std::string text = "void " + prefix_ + "_predict(" + Inputs() + ", " + Outputs("") + ")\n{\n";
    for (std::size_t k = 0; k < project_.responses.size(); ++k)
      text += "  outputs[" + to_string(k) + "] = " + PredictName(k) + "(inputs);\n";
    return text + "}\n\n";
  }

  std::string Arguments(const Expression& expression, const char* between) {
    std::string text;
    for (const Expression& argument : expression.arguments)
      text += (text.empty() ? "" : between) + Value(argument);
    return text;
  }

  std::string Value(const Expression& expression) {
    using Op = Expression::Operator;
    switch (expression.kind) {
      case Expression::Kind::kNumber:
        return expression.number < 0.0 ? '(' + RealText(expression.number) + ')'
                                       : RealText(expression.number);
      case Expression::Kind::kInput:
        return "inputs[" + to_string(expression.position) + ']';
      case Expression::Kind::kResponse:
        return "outputs[" + to_string(expression.position) + ']';
      case Expression::Kind::kCriterion:
        return CriterionName(expression.position) + "(inputs, outputs)";
      case Expression::Kind::kOperator:
        break;
    }
    switch (expression.op) {
      case Op::kAdd:
        return '(' + Arguments(expression, " + ") + ')';
      case Op::kSubtract:
        return '(' + Arguments(expression, " - ") + ')';
      case Op::kMultiply:
        return '(' + Arguments(expression, " * ") + ')';
      case Op::kDivide:
        return Helper("quotient") + '(' + Arguments(expression, ", ") + ')';
      case Op::kPower:
        return Helper("power") + '(' + Arguments(expression, ", ") + ')';
      case Op::kNegate:
        return "(-" + Value(expression.arguments.front()) + ')';
      case Op::kLog10:  // as the language of criteria has it
        return "(log(" + Value(expression.arguments.front()) + ") * 0.4342944819032518)";
      case Op::kLn:
        return "log(" + Value(expression.arguments.front()) + ')';
      case Op::kAbs:
        return "fabs(" + Value(expression.arguments.front()) + ')';
      case Op::kMin:
      case Op::kMax:
        return Helper(expression.op == Op::kMin ? "smallest" : "largest") + "((const double[]){" +
               Arguments(expression, ", ") + "}, " + to_string(expression.arguments.size()) + ')';
      default:
        return std::string(GetOperatorName(expression.op)) + '(' +
               Value(expression.arguments.front()) + ')';
    }
  }

  std::string Criteria() {
    if (project_.criteria.empty()) return {};
    std::string text;
    std::string all = "void " + prefix_ + "_criteria(" + Inputs() + ", " + Outputs("const ") +
                      ",\n    double criteria[" + to_string(project_.criteria.size()) + "])\n{\n";
    for (std::size_t c = 0; c < project_.criteria.size(); ++c) {
      const CriterionDescription& criterion = project_.criteria[c];
      text += "/* " + Shown(criterion.name) + ": " + Shown(criterion.text) + " */\ndouble " +
              CriterionName(c) + '(' + Inputs() + ", " + Outputs("const ") +
              ")\n{\n  (void)inputs;\n  (void)outputs;\n  return " + Value(criterion.value) +
              ";\n}\n\n";
      all += "  criteria[" + to_string(c) + "] = " + CriterionName(c) + "(inputs, outputs);\n";
    }
    return text + all + "}\n\n";
  }

  const ProjectDescription& project_;
  std::string prefix_;
  std::string upper_;  ///< prefix of macros and enumerators
  std::vector<std::string> response_ids_;
  std::vector<std::string> criterion_ids_;
  std::set<std::string> needed_;  ///< names of helpers
};

}  // namespace

std::string WriteC(const ProjectDescription& project, const std::string& prefix) {
  if (project.inputs.empty()) throw NotDescribable("the project has no inputs");
  if (project.responses.empty()) throw NotDescribable("the project has no response to predict");
  return Writer(project, prefix).Write();
}

}  // namespace corvath::exchange
