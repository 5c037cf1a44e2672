// A project file: it is read, its models are built, and what the C interface asks of a project is
// asked, a solve with criteria included.

#include "archive/archive_flags.h"
#include "archive/portable_iarchive.h"
#include "foundation/log.h"
#include "project/file/file_header.h"
#include "project/vrdb.h"
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

void Ask(ZELSolver& solver) {
  const auto inputs = static_cast<Eigen::Index>(solver.GetInputNames().size());
  solver.GetOutputNames();
  solver.GetCriteriaList();
  solver.GetInputBounds();
  solver.GetReferenceDesign();
  if (inputs > 1000) return;
  const Eigen::MatrixXd designs = Eigen::MatrixXd::Random(3, inputs);
  solver.ApproximateMatrix(designs, true, ExtrapolationType::kUnbounded, true);
  solver.ErrorsAllResponses(designs, ExtrapolationType::kUnbounded, true);
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
