#include "study/describe/project_report.h"

#include "exchange/export_project.h"
#include "exchange/model_reader.h"
#include "exchange/project_reader.h"
#include "foundation/text.h"
#include "project/file/json_writing.h"
#include "project/records/zel_information.h"
#include "report/report.h"
#include "solver/zel_solver.h"
#include "study/analysis/propagation_report.h"
#include "study/analysis/sensitivity_report.h"
#include "study/decide/optimize.h"
#include "study/describe/candidate_list.h"
#include "study/describe/json_text.h"
#include "study/project/project.h"
#include "study/refusal.h"
#include "study/table/table_columns.h"

#include <json/json.h>

namespace corvath::study {

namespace {

using exchange::NotDescribable;
using exchange::ProjectDescription;
using report::Competitor;

/// Of each response, beside the chosen one.
constexpr std::size_t kMaxCompetitors = 15;

std::string CompetitorText(const Candidate& candidate) {
  std::string text = candidate.family + " | " + std::to_string(candidate.order);
  if (candidate.interactions) text += ", interactions";
  if (candidate.ridge) text += ", ridge";
  if (candidate.box_cox) text += ", Box-Cox";
  return text;
}

std::vector<std::vector<Competitor>> CompetitorsOf(const Project& project,
                                                   const ProjectDescription& description) {
  std::vector<std::vector<Competitor>> all;
  const auto information = project.GetRecord().GetAlgorithmInfo()->GetZELInformation();
  for (const auto& response : description.responses) {
    std::vector<Competitor>& list = all.emplace_back();
    if (!information) continue;
    for (const Candidate& candidate :
         ListCandidates(*information, utils::FromUtf8(response.name))) {
      if (list.size() >= kMaxCompetitors && !candidate.chosen) continue;
      std::string inputs;
      for (const std::string& input : candidate.inputs)
        inputs += (inputs.empty() ? "" : ", ") + input;
      list.push_back(
          {CompetitorText(candidate), inputs, candidate.cop, candidate.rmse, candidate.chosen});
    }
  }
  return all;
}

std::vector<std::vector<std::string>> WordsOf(const Project& project,
                                              const ProjectDescription& description) {
  const TableColumns columns = TableColumns::FromProject(project.GetRecord());
  std::vector<std::vector<std::string>> all;
  for (const auto& input : description.inputs) {
    const TableColumn* const column = columns.Find(input.name);
    all.push_back(column == nullptr ? std::vector<std::string>() : column->words);
  }
  return all;
}

std::string DocumentText(const Json::Value& document) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return algorithm::datatypes::WriteJson(builder, document);
}

std::string OptimizationText(const Project& project, const ReportRequest& request,
                             const Progress& progress) {
  OptimizeRequest wanted;
  wanted.minimize = request.minimize;
  wanted.maximize = request.maximize;
  wanted.wording = request.wording;
  const Optimization found = Optimize(project, wanted, progress);
  Json::Value document;
  document["text"] = found.text;
  document["columns"] = Json::Value(Json::arrayValue);
  for (const std::string& column : found.columns) document["columns"].append(column);
  document["designs"] = Json::Value(Json::arrayValue);
  for (Eigen::Index row = 0; row < found.designs.rows(); ++row) {
    Json::Value design(Json::arrayValue);
    for (const double number : found.designs.row(row)) design.append(JsonNumber(number));
    document["designs"].append(design);
  }
  return DocumentText(document);
}

void AddAnalysis(const Project& project, const std::string& name, const ReportRequest& request,
                 const Progress& progress, report::Extras& extras) {
  if (name == "optimize") {
    extras.optimization = OptimizationText(project, request, progress);
    return;
  }
  const bool is_sensitivity = name == "sensitivity";
  if (!is_sensitivity && name != "propagate")
    throw Refusal("no analysis \"" + name +
                  "\" for a report; there are sensitivity, propagate and optimize");
  const VariedStudy study(project, {}, /*needs_distributions=*/!is_sensitivity);
  if (is_sensitivity)
    extras.sensitivity = DocumentText(SensitivityReport(study, {}, progress).GetDocument());
  else
    extras.propagation = DocumentText(PropagationReport(study, {}, progress).GetDocument());
}

}  // namespace

WrittenProject ReportProject(const Project& project, const ReportRequest& request,
                             const Progress& progress) {
  try {
    const ProjectDescription description =
        exchange::DescribeProject(project.GetSolver(), project.GetPath(), {});
    report::Extras extras;
    extras.competitors = CompetitorsOf(project, description);
    extras.words = WordsOf(project, description);
    extras.notes = request.notes;
    for (const std::string& name : request.with)
      AddAnalysis(project, name, request, progress, extras);
    WrittenProject result;
    result.text = report::WriteReport(project.GetSolver(), description, extras);
    for (const auto& entry : description.responses_left_out)
      result.warnings.push_back("response \"" + entry.name + "\" is left out: " + entry.reason);
    for (const auto& entry : description.criteria_left_out)
      result.warnings.push_back("criterion \"" + entry.name + "\" is left out: " + entry.reason);
    return result;
  } catch (const NotDescribable& error) {
    throw Refusal(project.GetName() + ": " + error.what());
  }
}

WrittenProject ExportModels(const Project& project, const std::string& format,
                            const std::string& name, const std::vector<std::string>& responses) {
  try {
    exchange::Export result = exchange::ExportProject(
        exchange::DescribeProject(project.GetSolver(), project.GetPath(), responses), format, name);
    return {std::move(result.text), std::move(result.warnings)};
  } catch (const NotDescribable& error) {
    throw Refusal(project.GetName() + ": " + error.what());
  }
}

}  // namespace corvath::study
