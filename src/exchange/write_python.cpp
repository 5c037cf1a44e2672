#include "exchange/write_python.h"

#include "exchange/c_text.h"
#include "exchange/expression_text.h"
#include "exchange/identifiers.h"
#include "exchange/number_text.h"
#include "exchange/python_helpers.h"
#include "foundation/build_version.h"

#include <cmath>

namespace corvath::exchange {

namespace {

using std::to_string;

/// Finite or not.
std::string PythonNumber(double number) {
  if (std::isnan(number)) return "np.nan";
  if (std::isinf(number)) return number < 0.0 ? "-np.inf" : "np.inf";
  return RealText(number);
}

template <class Numbers>
std::string Array(const Numbers& numbers) {
  std::string text = "np.array([";
  const char* between = "";
  for (const double number : numbers) {
    text += between + PythonNumber(number);
    between = ", ";
  }
  return text + "])";
}

std::string Matrix(const Eigen::MatrixXd& points) {
  std::string text = "np.array([";
  for (Eigen::Index i = 0; i < points.rows(); ++i) {
    text += i == 0 ? "\n    [" : ",\n    [";
    for (Eigen::Index j = 0; j < points.cols(); ++j)
      text += (j == 0 ? "" : ", ") + PythonNumber(points(i, j));
    text += ']';
  }
  return text + "])";
}

/// The literals of C strings, octal escapes included, are those of Python's bytes.
std::string PythonText(const std::string& utf8) {
  std::string literal = CString(utf8);
  for (std::size_t at = 0; (at = literal.find("\\?", at)) != std::string::npos;)
    if (at > 0 && literal[at - 1] == '\\' && !(at > 1 && literal[at - 2] == '\\'))
      at += 2;
    else
      literal.erase(at, 1);
  return 'b' + literal + ".decode()";
}

template <class Entries>
std::string NameTuple(const char* title, const Entries& entries) {
  std::string text = std::string(title) + " = (";
  for (const auto& entry : entries) text += "\n    " + PythonText(entry.name) + ',';
  return text + (entries.empty() ? ")\n" : "\n)\n");
}

template <class Pair>
std::string Pairs(const std::vector<Pair>& pairs) {
  std::string text = "[";
  for (const auto& [first, second] : pairs)
    text += (text.size() == 1 ? "(" : ", (") + to_string(first) + ", " + to_string(second) + ')';
  return text + ']';
}

std::string KernelText(const Kernel& kernel) {
  switch (kernel.kind) {
    case Kernel::Kind::kExponential:
      return "(\"exponential\", " + Array(kernel.factors) + ')';
    case Kernel::Kind::kRegularised:
      return "(\"regularised\", " + RealText(kernel.squared_radius) + ')';
    case Kernel::Kind::kNodal:
      return "(\"nodal\", " + RealText(kernel.factors.front()) + ", " + to_string(kernel.count) +
             ')';
  }
  return {};
}

std::string BackText(const std::vector<BackStep>& steps) {
  std::string text = "[";
  for (const BackStep& step : steps) {
    if (text.size() > 1) text += ", ";
    if (step.kind == BackStep::Kind::kBoxCox)
      text += "(\"box-cox\", " + to_string(step.k) + ')';
    else if (step.kind == BackStep::Kind::kScale)
      text += "(\"scale\", " + RealText(step.scale) + ", " + RealText(step.offset) + ')';
    else
      text += "(\"limits\", " + PythonNumber(step.lower) + ", " + PythonNumber(step.upper) + ')';
  }
  return text + ']';
}

std::string ModelText(const ResponseDescription& response) {
  const ResponseModel& model = response.model;
  const auto member = [](const char* key, const std::string& value) {
    return "    \"" + std::string(key) + "\": " + value + ",\n";
  };
  std::string inputs = "[";
  for (const std::size_t input : model.inputs)
    inputs += (inputs.size() == 1 ? "" : ", ") + to_string(input);
  std::string text =
      "{  # " + CommentText(response.name) + ": " + CommentText(response.model_name) + '\n';
  text += member("family", '"' + std::string(FamilyName(model.family)) + '"');
  text += member("inputs", inputs + ']') + member("scale", Array(model.scale)) +
          member("offset", Array(model.offset)) + member("constant", RealText(model.constant)) +
          member("coefficients", Array(model.coefficients)) +
          member("powers", model.is_average ? "None" : Pairs(model.powers)) +
          member("products", Pairs(model.products)) + member("back", BackText(model.back));
  if (model.has_power) text += member("power", to_string(model.power));
  if (!response.gradient_steps.empty()) text += member("steps", Array(response.gradient_steps));
  if (model.family == Family::kPolynomial) return text + '}';
  const auto terms = static_cast<Eigen::Index>(model.powers.size() + 1);
  if (model.family != Family::kThinPlateSplines) text += member("kernel", KernelText(model.kernel));
  return text + member("points", Matrix(model.points)) + member("values", Array(model.values)) +
         member("size", to_string(model.points.rows() + terms * terms)) + '}';
}

class PythonExpression : public ExpressionText {
 public:
  explicit PythonExpression(const std::vector<std::string>& criteria) : criteria_(criteria) {}

 protected:
  std::string Input(std::size_t position) override { return "x[:, " + to_string(position) + ']'; }
  std::string Response(std::size_t position) override {
    return "y[:, " + to_string(position) + ']';
  }
  std::string Criterion(std::size_t position) override {
    return "_criterion_" + criteria_[position] + "(x, y)";
  }

  std::string Function(Expression::Operator op) override {
    using Op = Expression::Operator;
    switch (op) {
      case Op::kDivide:
        return "_quotient";
      case Op::kPower:
        return "_power";
      case Op::kLn:
        return "np.log";
      case Op::kAsin:
      case Op::kAcos:
      case Op::kAtan:
        return "np.arc" + std::string(GetOperatorName(op) + 1);
      default:
        return "np." + std::string(GetOperatorName(op));
    }
  }

  std::string Extreme(Expression::Operator op, const std::vector<std::string>& numbers) override {
    return (op == Expression::Operator::kMin ? "_extreme(np.less, " : "_extreme(np.greater, ") +
           Join(numbers, ", ") + ')';
  }

 private:
  const std::vector<std::string>& criteria_;
};

std::string CriteriaText(const ProjectDescription& project, const std::vector<std::string>& names) {
  if (project.criteria.empty()) return {};
  PythonExpression expressions(names);
  std::string text;
  std::string list;
  for (std::size_t c = 0; c < names.size(); ++c) {
    const CriterionDescription& criterion = project.criteria[c];
    text += "\n\n# " + CommentText(criterion.name) + ": " + CommentText(criterion.text) +
            "\ndef _criterion_" + names[c] + "(x, y):\n    return np.zeros(len(x)) + " +
            expressions.Write(criterion.value) + '\n';
    text += "\n\ndef criterion_" + names[c] +
            "(inputs, outputs=None):\n    return _evaluate(_criterion_" + names[c] +
            ", inputs, outputs)\n";
    list += "_criterion_" + names[c] + ", ";
  }
  return text + R"(

def _evaluate(function, inputs, outputs):
    x, single = _rows(inputs)
    y = np.atleast_2d(predict(x) if outputs is None else np.asarray(outputs, dtype=float))
    with np.errstate(all="ignore"):
        value = function(x, y)
    return value[0] if single else value


def criteria(inputs, outputs=None):
    """All criteria at one design or n designs: C, or n x C. `outputs` are the predictions there;
    without them they are made. LIMITS tells which are limits, kept when not negative."""
    return _evaluate(lambda x, y: np.stack([f(x, y) for f in ()" +
         list + R"()], axis=1), inputs, outputs)
)";
}

}  // namespace

std::string WritePython(const ProjectDescription& project) {
  std::string text = "# Models of the project " + CommentText(project.name) +
                     ", written by zelsolver " + utils::GetBuildVersion().text + ".\n";
  if (!project.signature.empty()) text += "# SHA-512 of the project: " + project.signature + '\n';
  for (const LeftOut& entry : project.criteria_left_out)
    text += "# Not here: the criterion " + CommentText(entry.name) + ": " +
            CommentText(entry.reason) + '\n';
  text +=
      "\"\"\"Predictions of trained models: predict(inputs), and predict_NAME, gradient_NAME,\n"
      "criteria and criterion_NAME.\"\"\"\nimport numpy as np\n\n";
  text += NameTuple("INPUTS", project.inputs) + NameTuple("OUTPUTS", project.responses) +
          NameTuple("CRITERIA", project.criteria);
  text += "LIMITS = (";
  for (const auto& criterion : project.criteria) text += criterion.is_limit ? "True, " : "False, ";
  text += ")\n";
  std::vector<double> lower;
  std::vector<double> upper;
  for (const InputDescription& input : project.inputs) {
    lower.push_back(std::isnan(input.lower) ? -HUGE_VAL : input.lower);
    upper.push_back(std::isnan(input.upper) ? HUGE_VAL : input.upper);
  }
  text += "# The range of the designs.\nLOWER = " + Array(lower) + "\nUPPER = " + Array(upper) +
          "\n\n_MODELS = (";
  for (const ResponseDescription& response : project.responses) text += ModelText(response) + ", ";
  text += ")\n\n";
  text += kPythonHelpers;
  const ProjectIdentifiers identifiers = IdentifiersOf(project);
  for (std::size_t k = 0; k < project.responses.size(); ++k) {
    const std::string& name = identifiers.responses[k];
    text += "\n\ndef predict_" + name + "(inputs):\n    return _predict(inputs, _MODELS[" +
            to_string(k) + "])\n";
    if (!project.responses[k].gradient_steps.empty())
      text += "\n\ndef gradient_" + name + "(inputs):\n    return _gradient(inputs, _MODELS[" +
              to_string(k) + "])\n";
  }
  return text + CriteriaText(project, identifiers.criteria);
}

}  // namespace corvath::exchange
