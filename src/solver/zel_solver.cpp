#include "solver/zel_solver.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "project/file/project_file.h"
#include "project/records/algorithm_info.h"
#include "project/records/systems_information.h"
#include "project/records/zel3_information.h"
#include "project/records/zel_information.h"

#include <boost/filesystem/operations.hpp>
#include <boost/make_shared.hpp>
#include <boost/pointer_cast.hpp>

namespace corvath {

void load_construct_data(portable_binary_iarchive& ar, zel::ZELSolver* solver, unsigned int) {
  ar.Construct(solver, /*allow_missing_models=*/true);
}

}  // namespace corvath

namespace corvath::zel {
namespace {

using algorithm::datatypes::AlgorithmInfo;
using algorithm::datatypes::SurrogateInfoContainer;
using algorithm::datatypes::SystemsInformation;
using algorithm::datatypes::ZEL3Information;
using algorithm::datatypes::ZELInformation;
using utils::log::kError;
using utils::log::LogLine;

/// Status code of a reference design that was built here.
constexpr auto kBuiltReference = static_cast<algorithm::datatypes::RunInfoMeta::eRunInfo>(7);

boost::filesystem::file_status StatusOf(const std::wstring& path) {
  boost::system::error_code error;
  return boost::filesystem::status(algorithm::datatypes::ToNativePath(path), error);
}

const SurrogateInfoContainer* FindSurrogateInfos(const AlgorithmInfo& info) {
  const auto& detail = info.GetDetailedInformation();
  if (info.IsZEL()) {
    const auto zel = boost::dynamic_pointer_cast<ZELInformation>(detail);
    return zel ? &zel->surrogate_infos_ : nullptr;
  }
  if (info.IsZEL3()) {
    const auto zel3 = boost::dynamic_pointer_cast<ZEL3Information>(detail);
    return zel3 ? &zel3->GetSurrogateInfos() : nullptr;
  }
  const auto systems = boost::dynamic_pointer_cast<SystemsInformation>(detail);
  if (!systems) return nullptr;
  const auto set = systems->design_sets_map_.find(systems->prefered_design_set_);
  return set != systems->design_sets_map_.end() && set->second ? &set->second->surrogate_infos_
                                                               : nullptr;
}

}  // namespace

const ZELSolver::LogPointer& ZELSolver::GetLogger() {
  if (!log_) log_ = boost::make_shared<utils::log::VectorLog>();
  return log_;
}

bool ZELSolver::Load(const std::wstring& path) {
  if (path.empty()) {
    LogLine(GetLogger(), kError) << L"Given path is empty.";
    return false;
  }
  const auto status = StatusOf(path);
  if (!boost::filesystem::exists(status) || boost::filesystem::is_directory(status)) {
    LogLine(GetLogger(), kError) << L"\"" << path << L"\" does not exist";
    return false;
  }
  if (!boost::filesystem::is_regular_file(status)) {  // opening a pipe would wait for its writer
    LogLine(GetLogger(), kError) << L"\"" << path << L"\" is no regular file";
    return false;
  }
  return Take(VRDB(path), path);
}

bool ZELSolver::Take(VRDB project, std::wstring path) {
  vrdb_ = std::move(project);
  path_ = std::move(path);
  vrdb_.SetReferenceDesign(Design());  // GetReferenceDesign builds it for this solver's inputs
  return Initialize();
}

bool ZELSolver::Initialize() {
  const LogPointer log = GetLogger();
  DropCaches();
  try {
    const SurrogateInfoContainer& infos = GetSurrogateInfos();
    if (!infos.CheckAvailable(log)) return false;
    infos.SetLogger(log);
    // A model that can't be built fails when it is used, and says so then. Errors are built when
    // they are asked for: that may take seconds, and most callers never ask.
    infos.BuildAll({}, boost::make_shared<utils::log::LogDummy>());

    if (infos.IsEmpty()) {
      if (!allow_missing_models_) {
        LogLine(log, kError) << L"Approximation impossible due to missing meta models.";
        return false;
      }
      model_parameters_ = vrdb_.GetParameterManager().GetSubset(FindInputNames());
    } else {
      model_parameters_ = vrdb_.GetParameterManager().GetSubset(
          infos.GetSurrogateInfos().front().GetParameterNames());
    }
    return true;
  } catch (const std::exception& error) {
    LogLine(log, kError) << utils::MessageOf(error);
    return false;
  }
}

void ZELSolver::DropCaches() {
  const std::lock_guard<std::mutex> lock(names_mutex_);
  model_parameters_ = ParameterManager();
  input_names_.reset();
  output_names_.reset();
  criteria_.reset();
  criteria_templates_.reset();
  outputs_.reset();
  idle_criteria_.Drop();
  models_.clear();
  with_errors_.clear();
  input_bounds_.reset();
  data_limits_.reset();
}

const SurrogateInfoContainer& ZELSolver::GetSurrogateInfos() const {
  const auto& info = vrdb_.GetAlgorithmInfo();
  if (!info) throw utils::runtime_error(L"ZEL file expected.");
  const SurrogateInfoContainer* const infos = FindSurrogateInfos(*info);
  if (infos == nullptr) throw utils::runtime_error(L"Surrogate information not available.");
  return *infos;
}

const ZELSolver::Design& ZELSolver::GetReferenceDesign() {
  const Design& stored = vrdb_.GetReferenceDesign();
  if (!stored.GetParameters().empty() || !stored.GetResponses().empty() ||
      !stored.GetCriteria().empty())
    return stored;

  Design design;
  for (const std::wstring& name : GetInputNames())
    design.GetParameters().Append(
        name, vrdb_.GetParameterManager().GetParameter(name).GetReferenceValue());
  for (const auto& response : vrdb_.GetDesignContainer().GetResponseWidths(/*keep_largest=*/true))
    design.GetResponses().Append(response.first, CDesignEntry());
  design.SetCriteria(GetCriteriaTemplates());
  design.SetStatus(kBuiltReference);
  vrdb_.SetReferenceDesign(std::move(design));
  return vrdb_.GetReferenceDesign();
}

template <class Archive>
void ZELSolver::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(vrdb_);
}

}  // namespace corvath::zel

ZEL_INSTANTIATE_SERIALIZE(corvath::zel::ZELSolver)
ZEL_EXPORT_IMPLEMENT(corvath::zel::ZELSolver)
