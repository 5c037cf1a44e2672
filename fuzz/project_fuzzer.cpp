// A project file: it is read, its models are built, and all is asked of it that the C interface and
// zel ask: predictions with criteria, errors and densities, gradients, exports, the report. Four
// threads give what one gives, to the bit.

#include "archive/archive_flags.h"
#include "archive/portable_iarchive.h"
#include "calculator/criteria_evaluation.h"
#include "exchange/export_project.h"
#include "exchange/project_reader.h"
#include "foundation/log.h"
#include "foundation/parallel.h"
#include "project/file/file_header.h"
#include "project/file/project_file.h"
#include "project/records/algorithm_info.h"
#include "project/records/detailed_information.h"
#include "project/vrdb.h"
#include "report/report.h"
#include "solver/zel_solver.h"
#include "try.h"
#include "use_designs.h"

#include <boost/filesystem/operations.hpp>
#include <boost/make_shared.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <sstream>
#include <string>
#include <vector>

namespace {

using fuzz::Try;

using corvath::algorithm::datatypes::VRDB;
using corvath::zel::ExtrapolationType;
using corvath::zel::ZELSolver;

namespace exchange = corvath::exchange;

void WriteAll(ZELSolver& solver) {
  const auto description = exchange::DescribeProject(solver, "", {});
  for (const std::string& format : exchange::ExportFormats())
    Try([&] { exchange::ExportProject(description, format, "name"); });
  corvath::report::WriteReport(solver, description, {});
}

bool AreSame(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && (a[i] == a[i] || b[i] == b[i])) return false;
  return true;
}

void CompareThreads(ZELSolver& solver, Eigen::Index inputs) {
  constexpr Eigen::Index kRows = 1100;  // enough to be shared out
  const Eigen::MatrixXd designs = Eigen::MatrixXd::Random(kRows, inputs);
  const auto solve = [&](std::size_t threads) {
    corvath::utils::SetNumThreads(threads);
    return solver.ApproximateMatrix(designs, true, ExtrapolationType::kUnbounded, true);
  };
  const auto one = solve(1);
  const auto four = solve(4);
  if (!AreSame(one.responses, four.responses) || !AreSame(one.criteria, four.criteria))
    std::abort();
}

/// A file of the project's own bytes and one that is written of what they hold.
void CheckFiles(const std::string& bytes) {
  static const std::string path =
      "/dev/shm/" + boost::filesystem::unique_path("project-%%%%%%%%.vrdb").string();
  corvath::algorithm::datatypes::SaveProjectBytes(bytes, path);
  const VRDB project = corvath::algorithm::datatypes::LoadProjectFile(path);
  corvath::algorithm::datatypes::SaveProjectFile(project, path);
  corvath::algorithm::datatypes::LoadProjectFile(path);
  boost::filesystem::remove(path);
}

/// The criteria of the project's designs, with each option; also of designs without responses.
void EvaluateCriteria(const VRDB& project) {
  std::size_t count = 0;
  for (corvath::algorithm::datatypes::Design design : project.GetDesignContainer().GetDesigns()) {
    if (++count > 3) return;
    for (const bool option : {false, true})
      Try([&] { corvath::calculator::CalculateCriteria(design, {option, option, option}); });
    design.SetResponses({});
    Try([&] { corvath::calculator::CalculateCriteria(design, {false, true, true}); });
  }
}

/// What the project tells before its models are built.
void Use(VRDB& project) {
  fuzz::Use(project.GetParameterManager());
  fuzz::Use(project.GetDesignContainer());
  Try([&] { EvaluateCriteria(project); });
  Try([&] { project.GetInputBounds(); });
  Try([&] { project.GetSamplingType(); });
  Try([&] { project.GetResponseNames(); });
  for (const std::wstring& name : project.GetResponseNames())
    Try([&] { project.GetParameterLimits(name); });
  const auto& info = project.GetAlgorithmInfo();
  if (!info || !info->GetDetailedInformation()) return;
  const auto detail = info->GetDetailedInformation()->Clone();
  detail->IsEqual(info->GetDetailedInformation());
  const auto& designs = project.GetDesignContainer();
  const auto& parameters = project.GetParameterManager();
  Try([&] { detail->RecoverUsedDesigns(designs, parameters); });
  Try([&] { detail->ResetSupportData(designs, parameters); });
  Try([&] { detail->RestoreSupportData(designs, parameters); });
}

/// @param compare  with more threads, which takes longer
void Ask(ZELSolver& solver, bool compare) {
  const auto inputs = static_cast<Eigen::Index>(solver.GetInputNames().size());
  solver.GetOutputNames();
  solver.GetCriteriaList();
  solver.GetInputBounds();
  solver.GetReferenceDesign();
  if (inputs > 1000) return;
  std::srand(1);  // Random() asks it: an input always does the same
  const Eigen::MatrixXd designs = Eigen::MatrixXd::Random(3, inputs);
  constexpr auto kUnbounded = ExtrapolationType::kUnbounded;
  Try([&] { solver.ApproximateMatrix(designs, true, kUnbounded, true); });
  Try([&] { solver.ApproximateMatrix(designs, true, ExtrapolationType::kDataBounds, true); });
  Try([&] { solver.ErrorsAllResponses(designs, kUnbounded, true); });
  for (const std::wstring& name : solver.GetOutputNames()) {
    Try([&] { solver.ErrorsPerResponse(name, designs, kUnbounded, true); });
    Try([&] { solver.GradientsPerResponse(name, designs, kUnbounded, true); });
  }
  Try([&] { WriteAll(solver); });
  if (compare) Try([&] { CompareThreads(solver, inputs); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  corvath::utils::SetNumThreads(1);
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  ZELSolver solver(/*allow_missing_models=*/true);
  solver.SetLogger(boost::make_shared<corvath::utils::log::VectorLog>());
  try {
    corvath::algorithm::datatypes::ReadFileHeader(stream);
    corvath::portable_binary_iarchive archive(stream, corvath::archive::kSilentOnMismatch);
    archive >> solver.GetProject();
    Try([&] { Use(solver.GetProject()); });
    if (size % 16 == 0) Try([&] { CheckFiles(stream.str()); });
    if (solver.Initialize()) Ask(solver, size % 16 == 0);
  } catch (const std::exception&) {
    // a refusal
  }
  return 0;
}
