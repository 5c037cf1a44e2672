#include "commands.h"
#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "solver/zel_solver.h"
#include "standard_output.h"
#include "stochastics/random_variable.h"
#include "study/describe/candidate_list.h"
#include "study/describe/help_text.h"
#include "study/describe/json_text.h"
#include "study/describe/model_text.h"
#include "study/describe/project_document.h"
#include "study/describe/text_table.h"
#include "study/table/date_text.h"
#include "study/table/table_columns.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <new>
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

void PrintInputs(const Project& project, std::ostream& out) {
  const std::vector<Bounds> bounds = project.GetBounds();
  const auto& inputs = project.GetInputs();
  const bool has_units = std::any_of(inputs.begin(), inputs.end(), [&](const std::string& name) {
    return !InputUnit(project, name).empty();
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
    if (has_units) row.push_back(InputUnit(project, name));
    table.AddRow(std::move(row));
  }
  out << "Inputs (" << inputs.size() << "), with the range of the designs\n";
  table.Print(out, "  ");
}

/// The words, dates and titles of the table that the project was trained on.
void PrintColumns(const Project& project, std::ostream& out) {
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
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
TextTable PrintOutputs(const Project& project, std::ostream& out) {
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
    const auto* const model = FindModel(project, name);
    table.AddRow({name, CoPText(cops.back(), 4), model ? ToUtf8(model->GetName(false)) : "-",
                  UsedInputs(project.GetInputs(), filtered, cops)});
    std::string text = LargeLosses(name, cops.back(), project.GetInputs(), filtered, cops);
    if (!text.empty()) losses.push_back(std::move(text));
    if (model != nullptr) descriptions.AddRow({name, ToUtf8(model->GetDescription())});
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
void PrintDistributions(const Project& project, std::ostream& out) {
  const auto& manager = project.GetRecord().GetParameterManager();
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
    } catch (const std::bad_alloc&) {
      throw;
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

void PrintCriteria(const Project& project, std::ostream& out) {
  if (project.GetCriteria().empty()) return;
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("kind", TextTable::Align::kLeft);
  table.AddColumn("value", TextTable::Align::kLeft);
  for (const auto& [name, criterion] : project.GetSolver().GetCriteriaList())
    table.AddRow({ToUtf8(name),
                  criterion.IsLimitState() ? "limit, kept when not negative" : "value",
                  ToUtf8(criterion.GetExpression())});
  out << "\nCriteria (" << project.GetCriteria().size() << ")\n";
  table.Print(out, "  ");
}

void PrintAllCandidates(const Project& project, std::ostream& out) {
  bool any = false;
  for (const std::string& name : project.GetOutputs()) {
    const std::vector<Candidate> candidates = CandidatesOf(project, name);
    if (candidates.empty()) continue;
    any = true;
    out << "\nCandidates for " << name << " (" << candidates.size()
        << "), each with the CoP that it has by itself\n";
    PrintCandidates(candidates, "  ", out);
  }
  if (!any) out << "\nThe project does not tell which models competed.\n";
}

}  // namespace

void RunInfo(const InfoOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  const Project project = Project::Open(options.file, options.hash);
  if (options.json) {
    PrintResult(JsonText(ProjectDocument(project, options.candidates, /*with_formulas=*/false)));
    return;
  }
  std::ostringstream text;
  PrintInputs(project, text);
  PrintColumns(project, text);
  PrintDistributions(project, text);
  const TextTable descriptions = PrintOutputs(project, text);
  PrintCriteria(project, text);
  if (options.candidates) PrintAllCandidates(project, text);
  if (options.models) {
    text << "\nModels in full\n";
    descriptions.Print(text, "  ");
  }
  PrintResult(text.str());
}

}  // namespace cli
