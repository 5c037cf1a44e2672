#include "commands.h"
#include "exchange/model_reader.h"
#include "exchange/project_reader.h"
#include "foundation/text.h"
#include "output_file.h"
#include "project.h"
#include "project/records/zel_information.h"
#include "report/report.h"
#include "solver/zel_solver.h"
#include "standard_output.h"
#include "study/describe/candidate_list.h"

#include <exception>
#include <iostream>

namespace cli {
namespace {

using corvath::exchange::ProjectDescription;
using corvath::report::Competitor;

std::string ModelText(const Candidate& candidate) {
  std::string text = candidate.family + " | " + std::to_string(candidate.order);
  if (candidate.interactions) text += ", interactions";
  if (candidate.ridge) text += ", ridge";
  if (candidate.box_cox) text += ", Box-Cox";
  return text;
}

std::vector<std::vector<Competitor>> CompetitorsOf(corvath::zel::ZELSolver& solver,
                                                   const ProjectDescription& project) {
  std::vector<std::vector<Competitor>> all;
  const auto information = solver.GetProject().GetAlgorithmInfo()->GetZELInformation();
  for (const auto& response : project.responses) {
    std::vector<Competitor>& list = all.emplace_back();
    if (!information) continue;
    for (const Candidate& candidate :
         ListCandidates(*information, corvath::utils::FromUtf8(response.name))) {
      std::string inputs;
      for (const std::string& input : candidate.inputs)
        inputs += (inputs.empty() ? "" : ", ") + input;
      list.push_back(
          {ModelText(candidate), inputs, candidate.cop, candidate.rmse, candidate.chosen});
    }
  }
  return all;
}

}  // namespace

void RunReport(const ReportOptions& options) {
  ClaimStandardOutput();  // before the library logs what it meets
  OpenProject(options.file, options.hash);
  corvath::zel::ZELSolver solver(/*allow_missing_models=*/false);
  if (!solver.Load(corvath::utils::FromUtf8(options.file)))
    throw Refusal(options.file + ": changed while it was read");
  ProjectDescription project;
  std::string page;
  try {
    project = corvath::exchange::DescribeProject(solver, options.file, {});
    page = corvath::report::WriteReport(solver, project, CompetitorsOf(solver, project));
  } catch (const corvath::exchange::NotDescribable& error) {
    throw Refusal(options.file + ": " + error.what());
  }
  OutputFile file(options.out);
  file.Write(page);
  file.Commit();
  if (options.quiet) return;
  for (const auto& [what, list] : {std::pair("response", &project.responses_left_out),
                                   std::pair("criterion", &project.criteria_left_out)})
    for (const auto& entry : *list)
      std::cerr << "zel: " << options.file << ": " << what << " \"" << entry.name
                << "\" is left out: " << entry.reason << '\n';
}

}  // namespace cli
