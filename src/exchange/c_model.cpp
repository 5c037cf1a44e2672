#include "exchange/c_model.h"

#include "exchange/c_text.h"
#include "exchange/number_list.h"
#include "exchange/number_text.h"

#include <cmath>

namespace corvath::exchange {

namespace {

using std::to_string;

class ModelWriter {
 public:
  ModelWriter(const ProjectDescription& project, const CNames& names, std::set<std::string>& needed)
      : project_(project), names_(names), needed_(needed) {}

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
        locals += NearestDeclaration(model) + "  double partial[8] = {0.0};\n";
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
    std::string text = "/* " + ShownName(response.name) + ": " + CommentText(response.model_name) +
                       " */\n" + tables + "double " + names_.Predict(k) + '(' + names_.Inputs() +
                       ")\n{\n" + locals + Coordinates(model) + body + Back(model.back) +
                       "  return v;\n}\n\n";
    if (response.gradient_steps.empty()) return text;
    return text + "void " + names_.Gradient(k) + '(' + names_.Inputs() + ", " +
           names_.NewGradient() + ")\n{\n  static const double steps[" +
           to_string(project_.inputs.size()) + "] = {\n" +
           NumberLines(response.gradient_steps, "    ") + "  };\n  " + Helper("differences") + '(' +
           names_.Predict(k) + ", inputs, steps, gradient);\n}\n\n";
  }

 private:
  std::string Helper(const char* name) {
    needed_.insert(name);
    return names_.Own(name);
  }

  template <class Numbers>
  std::string NumberTable(const std::string& name, const Numbers& numbers) const {
    return "static const double " + name + '[' + to_string(numbers.size()) + "] = {\n" +
           NumberLines(numbers, "  ") + "};\n";
  }

  std::string SupportTables(const ResponseModel& model, std::size_t k) const {
    const auto n = static_cast<std::size_t>(model.points.rows());
    std::string text = "static const double " + names_.Table("points", k) + '[' + to_string(n) +
                       "][" + to_string(model.inputs.size()) + "] = {\n";
    for (Eigen::Index i = 0; i < model.points.rows(); ++i) {
      const Eigen::VectorXd point = model.points.row(i);
      text += "  {\n" + NumberLines(point, "    ") + "  }" +
              (i + 1 < model.points.rows() ? ",\n" : "\n");
    }
    text += "};\n" + NumberTable(names_.Table("values", k), model.values);
    if (model.kernel.factors.size() > 1)
      text += NumberTable(names_.Table("factors", k), model.kernel.factors);
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
    if (model.has_power) text += PowerOfCoordinates(model.power);
    return text.empty() ? "  (void)inputs;\n" : text;
  }

  /// Of the one coordinate that such a model has.
  static std::string PowerOfCoordinates(std::int64_t k) {
    if (k == 0) return "  u[0] = log(u[0]);\n";
    if (k == 1) return "  u[0] -= 1.0;\n";
    const std::string lambda = RealText(1.0 / static_cast<double>(k));
    return "  u[0] = (pow(u[0], " + lambda + ") - 1.0) / " + lambda + ";\n";
  }

  /// The weight of support point i.
  std::string Weight(const ResponseModel& model, std::size_t k) {
    const std::string n = to_string(model.inputs.size());
    const std::string point = names_.Table("points", k) + "[i]";
    if (model.kernel.factors.size() > 1)
      return Helper("exp") + '(' + Helper("scaled") + "(u, " + point + ", " +
             names_.Table("factors", k) + ", " + n + "))";
    const std::string squared = Helper("squared") + "(u, " + point + ", " + n + ')';
    switch (model.kernel.kind) {
      case Kernel::Kind::kExponential:
        return Helper("exp") + '(' + squared + " * " + RealText(model.kernel.factors.front()) + ')';
      case Kernel::Kind::kRegularised:
        return Helper("regularised") + '(' + squared + ", " +
               RealText(model.kernel.squared_radius) + ')';
      case Kernel::Kind::kNodal:
        return Helper("exp") + '(' + squared + " * " + RealText(model.kernel.factors.front()) +
               " / nearest)";
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
    return "  nearest = " + Helper("nearest") + "(u, &" + names_.Table("points", k) + "[0][0], " +
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

  /// In the library's order, so that weights that nearly cancel leave the same.
  std::string Kriging(const ResponseModel& model, std::size_t k) {
    return Nearest(model, k) + "  v = 0.0;\n" + Loop(model) +
           "    partial[i % 8] += " + names_.Table("values", k) + "[i] * " + Weight(model, k) +
           ";\n    if (i % 128 == 127)\n      v += " + Helper("collect") +
           "(partial);\n  }\n  v += " + Helper("collect") +
           "(partial);\n  v += " + RealText(model.constant) + ";\n";
  }

  std::string Splines(const ResponseModel& model, std::size_t k) {
    std::string text = "  v = 0.0;\n";
    for (std::size_t j = 0; j < model.inputs.size(); ++j)
      text += "  v += u[" + to_string(j) + "] * " + RealText(model.coefficients[j]) + ";\n";
    return text + "  v += " + RealText(model.constant) + ";\n" + Loop(model) +
           "    w = " + Helper("squared") + "(u, " + names_.Table("points", k) + "[i], " +
           to_string(model.inputs.size()) +
           ");\n    if (w != 0.0)\n      v += " + names_.Table("values", k) +
           "[i] * (0.5 * w * log(w));\n  }\n";
  }

  std::string Average(const ResponseModel& model, std::size_t k) {
    return Nearest(model, k) + "  v = 0.0;\n  sum = 0.0;\n" + Loop(model) +
           "    w = " + Weight(model, k) + ";\n    v += w * " + names_.Table("values", k) +
           "[i];\n    sum += w;\n  }\n  v /= sum;\n";
  }

  std::string Basis(const ResponseModel& model, std::size_t k) const {
    std::string text =
        "static void " + names_.Table("basis", k) + "(const double *u, double *basis)\n{\n";
    if (model.powers.empty()) text += "  (void)u;\n";
    text += "  basis[0] = 1.0;\n";
    for (std::size_t t = 0; t < model.powers.size(); ++t)
      text += "  basis[" + to_string(t + 1) + "] = " + PowerText(model.powers[t], "u") + ";\n";
    return text + "}\n\n";
  }

  static bool IsConstant(const ResponseModel& model) {
    return (model.values.array() == model.values(0)).all();
  }

  /// Sums and solution in the library's order: normal equations that are nearly singular magnify
  /// every rounding. It takes no system for values that are all equal, but asks for points in reach
  /// too.
  std::string LocalFit(const ResponseModel& model, std::size_t k) {
    const std::string p = to_string(model.powers.size() + 1);
    std::string text = Nearest(model, k) + "  reach = 0;\n";
    const bool constant = IsConstant(model);
    if (!constant)
      text += "  for (i = 0; i < " + p + " * " + p + "; ++i)\n    normal[i] = 0.0;\n" +
              "  for (i = 0; i < " + p + "; ++i)\n    right[i] = 0.0;\n";
    text += Loop(model) + "    w = " + Weight(model, k) + ";\n    reach += w > 1e-5;\n";
    if (!constant)
      text += "    if (w == 0.0)\n      continue;\n    " + names_.Table("basis", k) + '(' +
              names_.Table("points", k) + "[i], basis);\n    " + Helper("add") + '(' + p + ", w, " +
              names_.Table("values", k) + "[i], basis, normal, right);\n";
    text += "  }\n  if (reach < " + p + ")\n    return NAN;\n";
    if (constant) return text + "  v = " + names_.Table("values", k) + "[0];\n";
    Helper("solve");  // what "fit" calls
    return text + "  " + names_.Table("basis", k) + "(u, basis);\n  v = " + Helper("fit") + '(' +
           p + ", normal, right, basis, work, order);\n";
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

  static std::string FitLocals(const ResponseModel& model) {
    if (IsConstant(model)) return "  int reach;\n";
    const std::size_t p = model.powers.size() + 1;
    return "  double basis[" + to_string(p) + "], right[" + to_string(p) + "], normal[" +
           to_string(p * p) + "], work[" + to_string(p * (p + 3)) + "];\n  int reach, order[" +
           to_string(p) + "];\n";
  }

  const ProjectDescription& project_;
  const CNames& names_;
  std::set<std::string>& needed_;
};

}  // namespace

std::string CModel(const ProjectDescription& project, std::size_t k, const CNames& names,
                   std::set<std::string>& needed) {
  return ModelWriter(project, names, needed).Response(k);
}

}  // namespace corvath::exchange
