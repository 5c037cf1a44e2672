#include "design/indexed_name.h"
#include "project/records/algorithm_info.h"
#include "project/records/detailed_information.h"
#include "project/records/zel_information.h"
#include "solver/zel_solver.h"

#include <algorithm>
#include <set>

namespace corvath::zel {
namespace {

using algorithm::datatypes::IndexedName;
using algorithm::datatypes::Parameter;
using algorithm::datatypes::ParameterManager;
using algorithm::datatypes::SurrogateInfo;
using algorithm::datatypes::SurrogateInfoContainer;
using algorithm::datatypes::VRDB;

/// The inputs that the models of a project of type 18 list for themselves; null if they don't.
const ParameterManager* FindModelInputs(const VRDB& project) {
  const auto& info = project.GetAlgorithmInfo();
  if (!info || !info->IsZEL()) return nullptr;
  const auto zel = info->GetZELInformation();
  return zel && !zel->parameter_manager_.IsEmpty() ? &zel->parameter_manager_ : nullptr;
}

/// The names under which a response of this width can have models.
std::vector<std::wstring> ExpandName(const std::wstring& name, std::int64_t width) {
  if (width == 0) return {name};
  std::vector<std::wstring> names;
  for (std::int64_t i = 0; i < width; ++i)
    names.push_back(IndexedName(name, static_cast<std::uint64_t>(i)));
  return names;
}

/// Whether each element of a response of this width has a model.
bool IsComplete(const SurrogateInfoContainer& infos, const std::wstring& name, std::int64_t width) {
  for (std::int64_t i = 0; i < std::max<std::int64_t>(width, 1); ++i)
    if (!infos.HasSurrogateInfo(name, static_cast<std::uint64_t>(i))) return false;
  return true;
}

/// Where the columns of a model stand among the inputs; empty when both have one order, also when
/// the model doesn't run over just these inputs, and will refuse them.
std::vector<Eigen::Index> FindColumns(const SurrogateInfo& info,
                                      const std::vector<std::wstring>& inputs) {
  const auto& lookup = info.GetParameterNameLookupMap();
  std::vector<Eigen::Index> columns(inputs.size(), -1);
  bool is_same_order = true;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const auto found = lookup.find(inputs[i]);
    if (found == lookup.end() || found->second >= columns.size() || columns[found->second] >= 0)
      return {};
    columns[found->second] = static_cast<Eigen::Index>(i);
    is_same_order = is_same_order && found->second == i;
  }
  if (is_same_order || lookup.size() != inputs.size()) return {};
  return columns;
}

}  // namespace

const std::vector<std::wstring>& ZELSolver::GetInputNames() {
  return Once(input_names_, [this] { return FindInputNames(); });
}

const std::vector<std::wstring>& ZELSolver::GetOutputNames() {
  const auto& outputs = GetOutputs();
  return Once(output_names_, [&] {
    std::vector<std::wstring> names;
    names.reserve(outputs.size());
    for (const Output& output : outputs) names.push_back(output.name);
    return names;
  });
}

const std::vector<ZELSolver::Output>& ZELSolver::GetOutputs() {
  const auto& inputs = GetInputNames();
  return Once(outputs_, [&] { return FindOutputs(inputs); });
}

/// @throws corvath::utils::runtime_error  unknown response
const ZELSolver::Model& ZELSolver::GetModel(const std::wstring& response) {
  const SurrogateInfo& info = GetSurrogateInfos().GetSurrogateInfo(response);
  const auto& inputs = GetInputNames();
  const std::lock_guard<std::mutex> lock(names_mutex_);
  const auto known = models_.find(&info);
  if (known != models_.end()) return known->second;
  const SurrogatePointer& surrogate = info.GetSurrogate();
  Model model{surrogate, FindColumns(info, inputs), surrogate && surrogate->IsSolvable()};
  return models_.emplace(&info, std::move(model)).first->second;
}

const ZELSolver::CriterionSequence& ZELSolver::GetCriteriaTemplates() {
  return Once(criteria_templates_,
              [this] { return vrdb_.GetDesignContainer().GetCriteriaTemplate(); });
}

const ZELSolver::CriteriaList& ZELSolver::GetCriteriaList() {
  const auto& templates = GetCriteriaTemplates();
  return Once(criteria_, [&] { return CriteriaList(templates.begin(), templates.end()); });
}

const ZELSolver::Bounds& ZELSolver::GetInputBounds() {
  return Once(input_bounds_, [this] { return vrdb_.GetInputBounds(); });
}

std::vector<std::wstring> ZELSolver::FindInputNames() const {
  const ParameterManager& parameters = vrdb_.GetParameterManager();
  const ParameterManager* const model_inputs = FindModelInputs(vrdb_);
  const bool stochastic =
      vrdb_.GetSamplingType() == algorithm::datatypes::DetailedInformationBase::kStochasticSampling;

  std::vector<std::wstring> names;
  for (const Parameter& candidate :
       (model_inputs ? *model_inputs : parameters).GetAllParameters()) {
    const Parameter* const parameter = parameters.FindParameter(candidate.GetName());
    if (parameter == nullptr || parameter->IsConst()) continue;
    if (model_inputs == nullptr && parameter->IsDependent()) continue;
    if (stochastic ? !parameter->HasRandom() : !parameter->IsOptimization()) continue;
    if (!model_parameters_.IsEmpty() &&
        model_parameters_.FindParameter(candidate.GetName()) == nullptr)
      continue;
    names.push_back(candidate.GetName());
  }
  return names;
}

std::vector<ZELSolver::Output> ZELSolver::FindOutputs(
    const std::vector<std::wstring>& inputs) const {
  const SurrogateInfoContainer& infos = GetSurrogateInfos();
  const auto listed_names = vrdb_.GetResponseNames();
  const std::set<std::wstring> listed(listed_names.begin(), listed_names.end());

  std::vector<Output> outputs;
  std::set<std::wstring> known;
  for (const auto& [base, width] : vrdb_.GetDesignContainer().GetModelResponseWidths()) {
    const bool is_complete =
        (listed.empty() || listed.count(base) > 0) && IsComplete(infos, base, width);
    for (std::wstring& name : ExpandName(base, width)) {
      if (!infos.HasSurrogateInfo(name) || !known.insert(name).second) continue;
      const SurrogateInfo& info = infos.GetSurrogateInfo(name);
      outputs.push_back({std::move(name), &info, FindColumns(info, inputs), is_complete});
    }
  }
  return outputs;
}

}  // namespace corvath::zel
