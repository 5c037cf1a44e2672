#include "commands.h"
#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "project.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/zel_information.h"
#include "solver/zel_solver.h"
#include "standard_output.h"
#include "stochastics/random_variable.h"
#include "study/describe/candidate_list.h"
#include "study/describe/help_text.h"
#include "study/describe/json_text.h"
#include "study/describe/model_text.h"
#include "study/describe/text_table.h"
#include "study/table/date_text.h"
#include "study/table/table_columns.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <ostream>
#include <sstream>

namespace cli {
namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

/// A bound or reference value; "-" where the project has none.
std::string ValueText(double value) {
  return std::isfinite(value) ? Short(value) : "-";
}

std::string UnitOf(const corvath::algorithm::datatypes::ParameterManager& manager,
                   const std::string& input) {
  const auto* const parameter = manager.FindParameter(FromUtf8(input));
  return parameter == nullptr ? "" : ToUtf8(parameter->GetUnit());
}

void PrintInputs(const Project& project, corvath::zel::ZELSolver& solver, std::ostream& out) {
  const auto& manager = solver.GetProject().GetParameterManager();
  const std::vector<zelsolver::Bounds> bounds = project.GetBounds();
  const auto& inputs = project.GetInputs();
  const bool has_units = std::any_of(inputs.begin(), inputs.end(), [&](const std::string& name) {
    return !UnitOf(manager, name).empty();
  });
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  for (const char* title : {"lower", "upper", "reference"})
    table.AddColumn(title, TextTable::Align::kRight);
  if (has_units) table.AddColumn("unit", TextTable::Align::kLeft);
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const std::string& name = inputs[i];
    std::vector<std::string> row = {name, ValueText(bounds[i].lower), ValueText(bounds[i].upper),
                                    ValueText(project.GetReferenceValue(name))};
    if (has_units) row.push_back(UnitOf(manager, name));
    table.AddRow(std::move(row));
  }
  out << "Inputs (" << inputs.size() << "), with the range of the designs\n";
  table.Print(out, "  ");
}

/// The words, dates and titles of the table that the project was trained on.
void PrintColumns(corvath::zel::ZELSolver& solver, std::ostream& out) {
  const TableColumns columns = TableColumns::FromProject(solver.GetProject());
  if (columns.GetAll().empty()) return;
  out << "\nColumns of the table\n";
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("meaning", TextTable::Align::kLeft);
  for (const auto& [name, column] : columns.GetAll()) {
    if (!column.title.empty()) table.AddRow({name, "the column \"" + column.title + '"'});
    if (!column.words.empty()) table.AddRow({name, "codes of words: " + WordsText(column.words)});
    if (column.is_date) table.AddRow({name, "days since " + std::string(kDateOrigin)});
  }
  table.Print(out, "  ");
}

/// @return the descriptions of the models
TextTable PrintOutputs(const Project& project, corvath::zel::ZELSolver& solver, std::ostream& out) {
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("CoP", TextTable::Align::kRight);
  table.AddColumn("model", TextTable::Align::kLeft);
  table.AddColumn("inputs that it uses, with the loss of CoP without each",
                  TextTable::Align::kLeft);
  TextTable descriptions;
  descriptions.AddColumn("name", TextTable::Align::kLeft);
  descriptions.AddColumn("description", TextTable::Align::kLeft);
  std::vector<std::string> losses;
  for (const std::string& name : project.GetOutputs()) {
    const std::vector<double> cops = project.GetCoPs(name);
    const std::vector<bool> filtered = project.GetFiltered(name);
    const auto& model = solver.GetSurrogateInfos().GetSurrogateInfo(FromUtf8(name)).GetSurrogate();
    table.AddRow({name, CoPText(cops.back(), 4), model ? ToUtf8(model->GetName(false)) : "-",
                  UsedInputs(project.GetInputs(), filtered, cops)});
    std::string text = LargeLosses(name, cops.back(), project.GetInputs(), filtered, cops);
    if (!text.empty()) losses.push_back(std::move(text));
    if (model) descriptions.AddRow({name, ToUtf8(model->GetDescription())});
  }
  out << "\nResponses (" << project.GetOutputs().size()
      << "), with the coefficient of prognosis (CoP) of the model\n";
  table.Print(out, "  ");
  if (!losses.empty()) out << Wrapped(LargeLossNote(losses), "  ");
  return descriptions;
}

/// "mu 12, s 0.6": names of numbers with the numbers.
std::string Listed(const std::vector<std::wstring>& names, const Eigen::VectorXd& values) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && static_cast<Eigen::Index>(i) < values.size(); ++i)
    text += (text.empty() ? "" : ", ") + ToUtf8(names[i]) + ' ' +
            Short(values(static_cast<Eigen::Index>(i)));
  return text;
}

/// The distributions of random inputs and their correlations.
void PrintDistributions(const Project& project, corvath::zel::ZELSolver& solver,
                        std::ostream& out) {
  const auto& manager = solver.GetProject().GetParameterManager();
  TextTable table;
  for (const char* title : {"name", "distribution", "parameters", "moments"})
    table.AddColumn(title, TextTable::Align::kLeft);
  bool any = false;
  for (const std::string& name : project.GetInputs()) {
    const auto* const parameter = manager.FindParameter(FromUtf8(name));
    if (parameter == nullptr || !parameter->HasRandom()) continue;
    any = true;
    try {
      const auto variable = corvath::algorithm::datatypes::ParameterToRV(*parameter);
      table.AddRow({name, ToUtf8(variable->GetTypeName()),
                    Listed(variable->GetParameterNames(), variable->GetParameters()),
                    Listed(variable->GetMomentNames(), variable->GetStats())});
    } catch (const std::exception& error) {
      table.AddRow({name, error.what(), "-", "-"});
    }
  }
  if (!any) return;
  out << "\nDistributions of the inputs\n";
  table.Print(out, "  ");
  if (manager.GetCoherences().IsEmpty()) return;
  out << "\nCorrelations\n";
  TextTable correlations;
  correlations.AddColumn("inputs", TextTable::Align::kLeft);
  correlations.AddColumn("coefficient", TextTable::Align::kRight);
  for (const auto& [pair, coefficient] : manager.GetCoherences().GetEntries())
    correlations.AddRow(
        {ToUtf8(pair.GetFirst()) + ", " + ToUtf8(pair.GetSecond()), Short(coefficient)});
  correlations.Print(out, "  ");
}

void PrintCriteria(const Project& project, corvath::zel::ZELSolver& solver, std::ostream& out) {
  if (project.GetCriteria().empty()) return;
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("kind", TextTable::Align::kLeft);
  table.AddColumn("value", TextTable::Align::kLeft);
  for (const auto& [name, criterion] : solver.GetCriteriaList())
    table.AddRow({ToUtf8(name),
                  criterion.IsLimitState() ? "limit, kept when not negative" : "value",
                  ToUtf8(criterion.GetExpression())});
  out << "\nCriteria (" << project.GetCriteria().size() << ")\n";
  table.Print(out, "  ");
}

std::vector<Candidate> CandidatesOf(corvath::zel::ZELSolver& solver, const std::string& response) {
  const auto information = solver.GetProject().GetAlgorithmInfo()->GetZELInformation();
  return information ? ListCandidates(*information, FromUtf8(response)) : std::vector<Candidate>();
}

void PrintAllCandidates(const Project& project, corvath::zel::ZELSolver& solver,
                        std::ostream& out) {
  bool any = false;
  for (const std::string& name : project.GetOutputs()) {
    const std::vector<Candidate> candidates = CandidatesOf(solver, name);
    if (candidates.empty()) continue;
    any = true;
    out << "\nCandidates for " << name << " (" << candidates.size()
        << "), each with the CoP that it has by itself\n";
    PrintCandidates(candidates, "  ", out);
  }
  if (!any) out << "\nThe project does not tell which models competed.\n";
}

Json::Value Texts(const std::vector<std::wstring>& texts) {
  Json::Value json(Json::arrayValue);
  for (const std::wstring& text : texts) json.append(ToUtf8(text));
  return json;
}

/// A bound or reference value; null where the project has none.
Json::Value ValueJson(double value) {
  return std::isfinite(value) ? JsonNumber(value) : Json::Value();
}

Json::Value DistributionJson(const corvath::algorithm::datatypes::Parameter& parameter) {
  Json::Value json;
  try {
    const auto variable = corvath::algorithm::datatypes::ParameterToRV(parameter);
    json["type"] = ToUtf8(variable->GetTypeName());
    const auto add = [&](const char* key, const std::vector<std::wstring>& names,
                         const Eigen::VectorXd& values) {
      for (std::size_t i = 0; i < names.size() && static_cast<Eigen::Index>(i) < values.size(); ++i)
        json[key][ToUtf8(names[i])] = JsonNumber(values(static_cast<Eigen::Index>(i)));
    };
    add("parameters", variable->GetParameterNames(), variable->GetParameters());
    add("moments", variable->GetMomentNames(), variable->GetStats());
  } catch (const std::exception& error) {
    json["error"] = error.what();
  }
  return json;
}

Json::Value InputsJson(const Project& project, corvath::zel::ZELSolver& solver) {
  const auto& manager = solver.GetProject().GetParameterManager();
  const TableColumns columns = TableColumns::FromProject(solver.GetProject());
  const std::vector<zelsolver::Bounds> bounds = project.GetBounds();
  Json::Value list(Json::arrayValue);
  for (std::size_t i = 0; i < project.GetInputs().size(); ++i) {
    const std::string& name = project.GetInputs()[i];
    const TableColumn* const column = columns.Find(name);
    Json::Value json = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
    json["name"] = name;
    json["lower"] = ValueJson(bounds[i].lower);
    json["upper"] = ValueJson(bounds[i].upper);
    json["reference"] = ValueJson(project.GetReferenceValue(name));
    const std::string unit = UnitOf(manager, name);
    if (!unit.empty()) json["unit"] = unit;
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

Json::Value OutputJson(const Project& project, corvath::zel::ZELSolver& solver,
                       const std::string& name, bool with_candidates) {
  const std::vector<double> cops = project.GetCoPs(name);
  const std::vector<bool> filtered = project.GetFiltered(name);
  const auto& model = solver.GetSurrogateInfos().GetSurrogateInfo(FromUtf8(name)).GetSurrogate();
  const TableColumns columns = TableColumns::FromProject(solver.GetProject());
  const TableColumn* const column = columns.Find(name);
  Json::Value json = column == nullptr ? Json::Value(Json::objectValue) : column->ToJson();
  json["name"] = name;
  json["cop"] = CoPJson(cops.back());
  json["model"] = model ? Json::Value(ToUtf8(model->GetName(false))) : Json::Value();
  json["description"] = model ? Json::Value(ToUtf8(model->GetDescription())) : Json::Value();
  json["inputs"] = Json::Value(Json::arrayValue);
  for (std::size_t i = 0; i < filtered.size(); ++i) {
    if (filtered[i]) continue;
    Json::Value input;
    input["name"] = project.GetInputs()[i];
    input["single_cop"] = CoPJson(cops[i]);
    json["inputs"].append(input);
  }
  if (with_candidates) json["candidates"] = CandidatesJson(CandidatesOf(solver, name));
  return json;
}

Json::Value Document(const Project& project, corvath::zel::ZELSolver& solver,
                     bool with_candidates) {
  Json::Value document;
  document["project"] = project.GetPath();
  document["inputs"] = InputsJson(project, solver);
  document["correlations"] = Json::Value(Json::arrayValue);
  const auto& correlations = solver.GetProject().GetParameterManager().GetCoherences();
  for (const auto& [pair, coefficient] : correlations.GetEntries()) {
    Json::Value json;
    json["inputs"] = Texts({pair.GetFirst(), pair.GetSecond()});
    json["coefficient"] = JsonNumber(coefficient);
    document["correlations"].append(json);
  }
  document["responses"] = Json::Value(Json::arrayValue);
  for (const std::string& name : project.GetOutputs())
    document["responses"].append(OutputJson(project, solver, name, with_candidates));
  document["criteria"] = Json::Value(Json::arrayValue);
  if (project.GetCriteria().empty()) return document;
  for (const auto& [name, criterion] : solver.GetCriteriaList()) {
    Json::Value json;
    json["name"] = ToUtf8(name);
    json["limit"] = criterion.IsLimitState();
    json["value"] = ToUtf8(criterion.GetExpression());
    document["criteria"].append(json);
  }
  return document;
}

}  // namespace

void RunInfo(const InfoOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  const Project project = OpenProject(options.file, options.hash);
  corvath::zel::ZELSolver solver(/*allow_missing_models=*/false);
  if (!solver.Load(FromUtf8(options.file)))
    throw Refusal(options.file + ": changed while it was read");
  if (options.json) {
    PrintResult(JsonText(Document(project, solver, options.candidates)));
    return;
  }
  std::ostringstream text;
  PrintInputs(project, solver, text);
  PrintColumns(solver, text);
  PrintDistributions(project, solver, text);
  const TextTable descriptions = PrintOutputs(project, solver, text);
  PrintCriteria(project, solver, text);
  if (options.candidates) PrintAllCandidates(project, solver, text);
  if (options.models) {
    text << "\nModels in full\n";
    descriptions.Print(text, "  ");
  }
  PrintResult(text.str());
}

}  // namespace cli
