// A project file: it is read, its models are built, and all is asked of it that the C interface and
// zel ask: predictions with criteria, errors and densities, gradients, exports, the report.

#include "archive/archive_flags.h"
#include "archive/portable_iarchive.h"
#include "exchange/export_project.h"
#include "exchange/project_reader.h"
#include "foundation/log.h"
#include "project/file/file_header.h"
#include "project/vrdb.h"
#include "report/report.h"
#include "solver/zel_solver.h"

#include <boost/make_shared.hpp>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <sstream>
#include <string>

namespace {

using corvath::zel::ExtrapolationType;
using corvath::zel::ZELSolver;

namespace exchange = corvath::exchange;

/// A refusal of one question, which leaves the next one.
template <class Question>
void Try(const Question& question) {
  try {
    question();
  } catch (const std::exception&) {
    // a refusal
  }
}

void WriteAll(ZELSolver& solver) {
  const auto description = exchange::DescribeProject(solver, "", {});
  for (const std::string& format : exchange::ExportFormats())
    Try([&] { exchange::ExportProject(description, format, "name"); });
  corvath::report::WriteReport(solver, description, {});
}

void Ask(ZELSolver& solver) {
  const auto inputs = static_cast<Eigen::Index>(solver.GetInputNames().size());
  solver.GetOutputNames();
  solver.GetCriteriaList();
  solver.GetInputBounds();
  solver.GetReferenceDesign();
  if (inputs > 1000) return;
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
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
  ZELSolver solver(/*allow_missing_models=*/true);
  solver.SetLogger(boost::make_shared<corvath::utils::log::VectorLog>());
  try {
    corvath::algorithm::datatypes::ReadFileHeader(stream);
    corvath::portable_binary_iarchive archive(stream, corvath::archive::kSilentOnMismatch);
    archive >> solver.GetProject();
    if (solver.Initialize()) Ask(solver);
  } catch (const std::exception&) {
    // a refusal
  }
  return 0;
}
