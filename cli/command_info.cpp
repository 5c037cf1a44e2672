#include "api/call_frame.h"
#include "commands.h"
#include "design/parameter_manager.h"
#include "design/random_conversion.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "metamodel/surrogate_info_container.h"
#include "model_text.h"
#include "project.h"
#include "solver/zel_solver.h"
#include "standard_output.h"
#include "stochastics/random_variable.h"
#include "text_table.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <ostream>
#include <sstream>

namespace cli {
namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

/// A bound or reference value; "-" where the project has none.
std::string ValueText(double value) {
  return std::isnan(value) || value == std::numeric_limits<double>::max() ? "-" : Short(value);
}

void PrintInputs(const Project& project, std::ostream& out) {
  const std::vector<double> bounds = project.GetBounds();
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  for (const char* title : {"lower", "upper", "reference"})
    table.AddColumn(title, TextTable::Align::kRight);
  for (std::size_t i = 0; i < project.GetInputs().size(); ++i) {
    const std::string& name = project.GetInputs()[i];
    table.AddRow({name, ValueText(bounds[2 * i]), ValueText(bounds[2 * i + 1]),
                  ValueText(project.GetReferenceValue(name))});
  }
  out << "Inputs (" << project.GetInputs().size() << "), with the range of the designs\n";
  table.Print(out, "  ");
}

/// @return the descriptions of the models
TextTable PrintOutputs(const Project& project, const std::string& hash, std::ostream& out) {
  const auto solver = corvath::zel::api::ProvideSolver(project.GetFile().c_str(),
                                                       hash.empty() ? nullptr : hash.c_str());
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("CoP", TextTable::Align::kRight);
  table.AddColumn("model", TextTable::Align::kLeft);
  table.AddColumn("inputs that it uses, with the loss of CoP without each",
                  TextTable::Align::kLeft);
  TextTable descriptions;
  descriptions.AddColumn("name", TextTable::Align::kLeft);
  descriptions.AddColumn("description", TextTable::Align::kLeft);
  for (const std::string& name : project.GetOutputs()) {
    const std::vector<double> cops = project.GetCoPs(name);
    const std::vector<bool> filtered = project.GetFiltered(name);
    const auto& model = solver->GetSurrogateInfos().GetSurrogateInfo(FromUtf8(name)).GetSurrogate();
    table.AddRow({name, CoPText(cops.back(), 4), model ? ToUtf8(model->GetName(false)) : "-",
                  UsedInputs(project.GetInputs(), filtered, cops)});
    if (model) descriptions.AddRow({name, ToUtf8(model->GetDescription())});
  }
  out << "\nResponses (" << project.GetOutputs().size()
      << "), with the coefficient of prognosis (CoP) of the model\n";
  table.Print(out, "  ");
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
void PrintDistributions(const Project& project, const std::string& hash, std::ostream& out) {
  const auto solver = corvath::zel::api::ProvideSolver(project.GetFile().c_str(),
                                                       hash.empty() ? nullptr : hash.c_str());
  const auto& manager = solver->GetProject().GetParameterManager();
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

void PrintCriteria(const Project& project, const std::string& hash, std::ostream& out) {
  if (project.GetCriteria().empty()) return;
  const auto solver = corvath::zel::api::ProvideSolver(project.GetFile().c_str(),
                                                       hash.empty() ? nullptr : hash.c_str());
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("kind", TextTable::Align::kLeft);
  table.AddColumn("value", TextTable::Align::kLeft);
  for (const auto& [name, criterion] : solver->GetCriteriaList())
    table.AddRow({ToUtf8(name),
                  criterion.IsLimitState() ? "limit, kept when not negative" : "value",
                  ToUtf8(criterion.GetExpression())});
  out << "\nCriteria (" << project.GetCriteria().size() << ")\n";
  table.Print(out, "  ");
}

}  // namespace

void RunInfo(const std::string& file, const std::string& hash) {
  ClaimStandardOutput();  // before the library logs what it meets
  const Project project(file, hash);
  std::ostringstream text;
  PrintInputs(project, text);
  PrintDistributions(project, hash, text);
  const TextTable descriptions = PrintOutputs(project, hash, text);
  PrintCriteria(project, hash, text);
  text << "\nModels in full\n";
  descriptions.Print(text, "  ");
  PrintResult(text.str());
}

}  // namespace cli
