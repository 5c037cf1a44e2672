#include <cmath>
#include <iostream>

#include "api/call_frame.h"
#include "commands.h"
#include "foundation/text.h"
#include "metamodel/surrogate.h"
#include "metamodel/surrogate_info_container.h"
#include "project.h"
#include "solver/zel_solver.h"
#include "text_table.h"

namespace cli {
namespace {

using corvath::utils::FromUtf8;
using corvath::utils::ToUtf8;

/// A bound or reference value; "-" where the project has none.
std::string ValueText(double value) {
  return std::isnan(value) || value == std::numeric_limits<double>::max() ? "-" : Short(value);
}

/// A coefficient of prognosis; "-" where the project has none.
std::string CoPText(double cop) { return cop == -1.0 ? "-" : Short(cop); }

void PrintInputs(const Project& project) {
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
  std::cout << "Inputs (" << project.GetInputs().size() << "), with the range of the designs\n";
  table.Print(std::cout, "  ");
}

void PrintOutputs(const Project& project, const std::string& hash) {
  const auto solver = corvath::zel::api::ProvideSolver(project.GetFile().c_str(),
                                                       hash.empty() ? nullptr : hash.c_str());
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("CoP", TextTable::Align::kRight);
  table.AddColumn("model", TextTable::Align::kLeft);
  table.AddColumn("inputs used (CoP)", TextTable::Align::kLeft);
  for (const std::string& name : project.GetOutputs()) {
    const std::vector<double> cops = project.GetCoPs(name);
    const std::vector<bool> filtered = project.GetFiltered(name);
    std::string used;
    for (std::size_t i = 0; i < filtered.size(); ++i) {
      if (filtered[i]) continue;
      used += (used.empty() ? "" : ", ") + project.GetInputs()[i];
      if (cops[i] != -1.0) used += " (" + CoPText(cops[i]) + ")";
    }
    const auto& model =
        solver->GetSurrogateInfos().GetSurrogateInfo(FromUtf8(name)).GetSurrogate();
    table.AddRow({name, CoPText(cops.back()), model ? ToUtf8(model->GetName(false)) : "-", used});
  }
  std::cout << "\nResponses (" << project.GetOutputs().size()
            << "), with the coefficient of prognosis of the model and of each input in it\n";
  table.Print(std::cout, "  ");
}

void PrintCriteria(const Project& project, const std::string& hash) {
  if (project.GetCriteria().empty()) return;
  const auto solver = corvath::zel::api::ProvideSolver(project.GetFile().c_str(),
                                                       hash.empty() ? nullptr : hash.c_str());
  TextTable table;
  table.AddColumn("name", TextTable::Align::kLeft);
  table.AddColumn("kind", TextTable::Align::kLeft);
  table.AddColumn("value", TextTable::Align::kLeft);
  for (const auto& [name, criterion] : solver->GetCriteriaList())
    table.AddRow({ToUtf8(name), criterion.IsLimitState() ? "limit, kept when not negative" : "value",
                  ToUtf8(criterion.GetExpression())});
  std::cout << "\nCriteria (" << project.GetCriteria().size() << ")\n";
  table.Print(std::cout, "  ");
}

}  // namespace

void RunInfo(const std::string& file, const std::string& hash) {
  const Project project(file, hash);
  PrintInputs(project);
  PrintOutputs(project, hash);
  PrintCriteria(project, hash);
}

}  // namespace cli
