#include "exchange/write_json.h"

#include "foundation/build_version.h"

#include <cmath>

namespace corvath::exchange {

namespace {

void WriteVector(const char* key, const Eigen::VectorXd& numbers, JsonWriter& json) {
  json.Key(key);
  json.BeginArray();
  for (const double number : numbers) json.Number(number);
  json.EndArray();
}

/// Point after point.
void WritePoints(const Eigen::MatrixXd& points, JsonWriter& json) {
  json.Key("points");
  json.BeginArray();
  for (Eigen::Index i = 0; i < points.rows(); ++i) {
    json.BeginArray();
    for (Eigen::Index j = 0; j < points.cols(); ++j) json.Number(points(i, j));
    json.EndArray();
  }
  json.EndArray();
}

void WriteTerms(const ResponseModel& model, JsonWriter& json) {
  json.Key("powers");
  json.BeginArray();
  for (const Power& power : model.powers) {
    json.BeginArray();
    json.Count(power.input);
    json.Count(power.exponent);
    json.EndArray();
  }
  json.EndArray();
  if (model.family != Family::kPolynomial) return;
  json.Key("products");
  json.BeginArray();
  for (const Product& product : model.products) {
    json.BeginArray();
    json.Count(product.first);
    json.Count(product.second);
    json.EndArray();
  }
  json.EndArray();
}

void WriteKernel(const Kernel& kernel, JsonWriter& json) {
  json.Key("kernel");
  json.BeginObject();
  switch (kernel.kind) {
    case Kernel::Kind::kExponential:
      json.Text("kind", "exponential");
      json.Numbers("factors", kernel.factors);
      break;
    case Kernel::Kind::kRegularised:
      json.Text("kind", "regularised");
      json.Number("squared_radius", kernel.squared_radius);
      break;
    case Kernel::Kind::kNodal:
      json.Text("kind", "nodal");
      json.Number("factor", kernel.factors.front());
      json.Key("count");
      json.Count(kernel.count);
      break;
  }
  json.EndObject();
}

void WriteBack(const std::vector<BackStep>& steps, JsonWriter& json) {
  json.Key("back");
  json.BeginArray();
  for (const BackStep& step : steps) {
    json.BeginObject();
    switch (step.kind) {
      case BackStep::Kind::kBoxCox:
        json.Text("kind", "box-cox");
        json.Number("k", static_cast<double>(step.k));
        break;
      case BackStep::Kind::kScale:
        json.Text("kind", "scale");
        json.Number("scale", step.scale);
        json.Number("offset", step.offset);
        break;
      case BackStep::Kind::kLimits:
        json.Text("kind", "limits");
        json.Number("lower", step.lower);
        json.Number("upper", step.upper);
        break;
    }
    json.EndObject();
  }
  json.EndArray();
}

void WriteModel(const ResponseModel& model, JsonWriter& json) {
  json.Key("model");
  json.BeginObject();
  json.Text("family", FamilyName(model.family));
  json.Key("inputs");
  json.BeginArray();
  for (const std::size_t input : model.inputs) json.Count(input);
  json.EndArray();
  json.Numbers("scale", model.scale);
  json.Numbers("offset", model.offset);
  if (model.has_power) json.Number("power", static_cast<double>(model.power));
  if (model.family != Family::kMovingLeastSquares) json.Number("constant", model.constant);
  if (!model.coefficients.empty() || model.family == Family::kPolynomial)
    json.Numbers("coefficients", model.coefficients);
  if (model.family == Family::kPolynomial ||
      (model.family == Family::kMovingLeastSquares && !model.is_average))
    WriteTerms(model, json);
  if (model.family == Family::kMovingLeastSquares || model.family == Family::kKriging)
    WriteKernel(model.kernel, json);
  if (model.family != Family::kPolynomial) {
    WritePoints(model.points, json);
    WriteVector("values", model.values, json);
  }
  WriteBack(model.back, json);
  json.EndObject();
}

void WriteError(const LocalError& error, JsonWriter& json) {
  json.Key("error");
  json.BeginObject();
  json.Number("everywhere", error.everywhere);
  if (error.factor != 0.0) {
    json.Number("factor", error.factor);
    WriteVector("residuals", error.residuals, json);
    if (error.points.rows() > 0) WritePoints(error.points, json);
  }
  json.EndObject();
}

void WriteInput(const InputDescription& input, JsonWriter& json) {
  json.NewLine();
  json.BeginObject();
  json.Text("name", input.name);
  if (!input.unit.empty()) json.Text("unit", input.unit);
  json.Number("lower", input.lower);
  json.Number("upper", input.upper);
  json.Number("reference", input.reference);
  if (!input.states.empty()) json.Numbers("states", input.states);
  json.EndObject();
}

void WriteResponse(const ResponseDescription& response, JsonWriter& json) {
  json.NewLine();
  json.BeginObject();
  json.Text("name", response.name);
  if (!response.unit.empty()) json.Text("unit", response.unit);
  json.Text("description", response.model_name);
  json.Number("cop", response.cop);
  json.Numbers("single_cops", response.single_cops);
  WriteModel(response.model, json);
  if (!response.gradient_steps.empty()) json.Numbers("gradient_steps", response.gradient_steps);
  if (response.has_error) WriteError(response.error, json);
  json.EndObject();
}

/// A number as it is, a name as {"input": 0}, an operator as ["+", argument, argument].
void WriteExpression(const Expression& expression, JsonWriter& json) {
  switch (expression.kind) {
    case Expression::Kind::kNumber:
      return json.Number(expression.number);
    case Expression::Kind::kInput:
    case Expression::Kind::kResponse:
    case Expression::Kind::kCriterion:
      json.BeginObject();
      json.Key(expression.kind == Expression::Kind::kInput      ? "input"
               : expression.kind == Expression::Kind::kResponse ? "response"
                                                                : "criterion");
      json.Count(expression.position);
      json.EndObject();
      return;
    case Expression::Kind::kOperator:
      json.BeginArray();
      json.Text(GetOperatorName(expression.op));
      for (const Expression& argument : expression.arguments) WriteExpression(argument, json);
      json.EndArray();
  }
}

void WriteCriterion(const CriterionDescription& criterion, JsonWriter& json) {
  json.NewLine();
  json.BeginObject();
  json.Text("name", criterion.name);
  json.Text("text", criterion.text);
  json.Key("limit");
  json.Truth(criterion.is_limit);
  json.Key("value");
  WriteExpression(criterion.value, json);
  json.EndObject();
}

void WriteLeftOut(const char* key, const std::vector<LeftOut>& left_out, JsonWriter& json) {
  json.NewLine();
  json.Key(key);
  json.BeginArray();
  for (const LeftOut& entry : left_out) {
    json.BeginObject();
    json.Text("name", entry.name);
    json.Text("reason", entry.reason);
    json.EndObject();
  }
  json.EndArray();
}

template <class List, class Write>
void WriteList(const char* key, const List& list, Write write, JsonWriter& json) {
  json.NewLine();
  json.Key(key);
  json.BeginArray();
  for (const auto& element : list) write(element, json);
  json.EndArray();
}

}  // namespace

void WriteJson(const ProjectDescription& project, JsonWriter& json) {
  json.BeginObject();
  json.Text("format", "zelsolver models");
  json.Key("version");
  json.Count(kModelJsonVersion);
  json.Text("made_by", "zelsolver " + utils::GetBuildVersion().text);
  json.Key("project");
  json.BeginObject();
  json.Text("name", project.name);
  json.Text("sha512", project.signature);
  json.EndObject();
  WriteList("inputs", project.inputs, WriteInput, json);
  WriteList("responses", project.responses, WriteResponse, json);
  WriteList("criteria", project.criteria, WriteCriterion, json);
  WriteLeftOut("responses_left_out", project.responses_left_out, json);
  WriteLeftOut("criteria_left_out", project.criteria_left_out, json);
  json.EndObject();
}

std::string WriteJson(const ProjectDescription& project) {
  JsonWriter json;
  WriteJson(project, json);
  return json.GetText() + '\n';
}

}  // namespace corvath::exchange
