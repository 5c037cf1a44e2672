#include "study/describe/project_document.h"

#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/zel_information.h"
#include "solver/zel_solver.h"
#include "stochastics/random_variable.h"
#include "study/describe/json_text.h"
#include "study/table/table_columns.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>

namespace corvath::study {
namespace {

using utils::FromUtf8;
using utils::ToUtf8;

Json::Value Texts(const std::vector<std::wstring>& texts) {
  Json::Value json(Json::arrayValue);
  for (const std::wstring& text : texts) json.append(ToUtf8(text));
  return json;
}

/// A bound or reference value; null where the project has none.
Json::Value ValueJson(double value) {
  return std::isfinite(value) ? JsonNumber(value) : Json::Value();
}

Json::Value DistributionJson(const algorithm::datatypes::Parameter& parameter) {
  Json::Value json;
  try {
    const auto variable = algorithm::datatypes::ParameterToRV(parameter);
    json["type"] = ToUtf8(variable->GetTypeName());
    const auto add = [&](const char* key, const std::vector<std::wstring>& names,
                         const Eigen::VectorXd& values) {
      for (std::size_t i = 0; i < names.size() && static_cast<Eigen::Index>(i) < values.size(); ++i)
        json[key][ToUtf8(names[i])] = JsonNumber(values(static_cast<Eigen::Index>(i)));
    };
    add("parameters", variable->GetParameterNames(), variable->GetParameters());
    add("moments", variable->GetMomentNames(), variable->GetStats());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    json["error"] = error.what();
  }
  return json;
}

Json::Value InputsJson(const Project& project) {
  const auto& manager = project.GetRecord().GetParameterManager();
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
  const std::vector<Bounds> bounds = project.GetBounds();
  Json::Value list(Json::arrayValue);
  for (std::size_t i = 0; i < project.GetInputs().size(); ++i) {
    const std::string& name = project.GetInputs()[i];
    const TableColumn* const column = columns.Find(name);
    Json::Value json = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
    json["name"] = name;
    json["lower"] = ValueJson(bounds[i].lower);
    json["upper"] = ValueJson(bounds[i].upper);
    json["reference"] = ValueJson(project.GetReferenceValue(name));
    const std::string unit = InputUnit(project, name);
    if (!unit.empty()) json["unit"] = unit;
    for (const double state : project.GetStates(name)) json["states"].append(JsonNumber(state));
    const auto* const parameter = manager.FindParameter(FromUtf8(name));
    if (parameter != nullptr && parameter->HasRandom())
      json["distribution"] = DistributionJson(*parameter);
    list.append(json);
  }
  return list;
}

/// A CoP; null for -1, where there is none.
Json::Value CoPJson(double cop) {
  return cop == -1.0 ? Json::Value() : JsonNumber(cop);
}

Json::Value OutputJson(const Project& project, const std::string& name, bool with_candidates,
                       bool with_formulas) {
  const std::vector<double> cops = project.GetCoPs(name);
  const std::vector<bool> filtered = project.GetFiltered(name);
  const auto* const model = FindModel(project, name);
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
  const TableColumn* const column = columns.Find(name);
  Json::Value json = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
  json["name"] = name;
  json["cop"] = CoPJson(cops.back());
  json["model"] = model ? Json::Value(ToUtf8(model->GetName(false))) : Json::Value();
  json["description"] = model ? Json::Value(ToUtf8(model->GetDescription())) : Json::Value();
  if (with_formulas && model != nullptr)
    json["formula"] = ToUtf8(model->GetModelFunction(project.GetSolver().GetInputNames()));
  json["inputs"] = Json::Value(Json::arrayValue);
  for (std::size_t i = 0; i < filtered.size(); ++i) {
    if (filtered[i]) continue;
    Json::Value input;
    input["name"] = project.GetInputs()[i];
    input["single_cop"] = CoPJson(cops[i]);
    json["inputs"].append(input);
  }
  if (with_candidates) json["candidates"] = CandidatesJson(CandidatesOf(project, name));
  return json;
}

}  // namespace

Json::Value ProjectDocument(const Project& project, bool with_candidates, bool with_formulas) {
  Json::Value document;
  document["project"] = project.GetPath().empty() ? Json::Value() : Json::Value(project.GetPath());
  document["inputs"] = InputsJson(project);
  document["correlations"] = Json::Value(Json::arrayValue);
  const auto& correlations = project.GetRecord().GetParameterManager().GetCoherences();
  for (const auto& [pair, coefficient] : correlations.GetEntries()) {
    Json::Value json;
    json["inputs"] = Texts({pair.GetFirst(), pair.GetSecond()});
    json["coefficient"] = JsonNumber(coefficient);
    document["correlations"].append(json);
  }
  document["responses"] = Json::Value(Json::arrayValue);
  for (const std::string& name : project.GetOutputs())
    document["responses"].append(OutputJson(project, name, with_candidates, with_formulas));
  document["criteria"] = Json::Value(Json::arrayValue);
  if (project.GetCriteria().empty()) return document;
  for (const auto& [name, criterion] : project.GetSolver().GetCriteriaList()) {
    Json::Value json;
    json["name"] = ToUtf8(name);
    json["limit"] = criterion.IsLimitState();
    json["value"] = ToUtf8(criterion.GetExpression());
    document["criteria"].append(json);
  }
  return document;
}

void AddProjectArrays(const Project& project, Result& result) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  const auto& inputs = project.GetInputs();
  const auto& outputs = project.GetOutputs();
  const std::size_t m = inputs.size();
  const auto finite = [](double value) { return std::isfinite(value) ? value : kNone; };
  NamedArray& ends = result.Add("bounds", m, 2);
  NamedArray& reference = result.Add("reference", m, 1);
  const std::vector<Bounds> bounds = project.GetBounds();
  for (std::size_t i = 0; i < m; ++i) {
    ends.values[2 * i] = finite(bounds[i].lower);
    ends.values[2 * i + 1] = finite(bounds[i].upper);
    reference.values[i] = finite(project.GetReferenceValue(inputs[i]));
  }
  NamedArray& cops = result.Add("cops", outputs.size(), 1);
  NamedArray& singles = result.Add("single_cops", outputs.size(), m);
  for (std::size_t k = 0; k < outputs.size(); ++k) {
    const std::vector<double> values = project.GetCoPs(outputs[k]);
    const std::vector<bool> filtered = project.GetFiltered(outputs[k]);
    for (std::size_t i = 0; i < m; ++i)
      singles.values[k * m + i] = filtered[i] || values[i] == -1.0 ? kNone : values[i];
    cops.values[k] = values[m] == -1.0 ? kNone : values[m];
  }
  NamedArray& correlations = result.Add("correlations", m, m);
  for (std::size_t i = 0; i < m; ++i) correlations.values[i * m + i] = 1.0;
  const auto index = [&](const std::wstring& name) {
    return static_cast<std::size_t>(std::find(inputs.begin(), inputs.end(), ToUtf8(name)) -
                                    inputs.begin());
  };
  for (const auto& [pair, value] :
       project.GetRecord().GetParameterManager().GetCoherences().GetEntries()) {
    const std::size_t a = index(pair.GetFirst());
    const std::size_t b = index(pair.GetSecond());
    if (a < m && b < m) correlations.values[a * m + b] = correlations.values[b * m + a] = value;
  }
}

std::string InputUnit(const Project& project, const std::string& input) {
  const auto* const parameter =
      project.GetRecord().GetParameterManager().FindParameter(FromUtf8(input));
  return parameter == nullptr ? "" : ToUtf8(parameter->GetUnit());
}

const math::metamodel::SurrogateBase* FindModel(const Project& project, const std::string& output) {
  return project.GetSolver()
      .GetSurrogateInfos()
      .GetSurrogateInfo(FromUtf8(output))
      .GetSurrogate()
      .get();
}

std::vector<Candidate> CandidatesOf(const Project& project, const std::string& output) {
  const auto& info = project.GetRecord().GetAlgorithmInfo();
  const auto information = info ? info->GetZELInformation() : nullptr;
  return information ? ListCandidates(*information, FromUtf8(output)) : std::vector<Candidate>();
}

}  // namespace corvath::study
