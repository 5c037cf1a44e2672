#include "training/study_writer.h"

#include "calculator/criteria_evaluation.h"
#include "design/designs/design.h"
#include "design/designs/design_manager.h"
#include "design/designs/indexed_responses.h"
#include "design/indexed_name.h"
#include "design/parameters/parameter_manager.h"
#include "project/models/surrogate_info.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"
#include "training/settings_record.h"

#include <boost/make_shared.hpp>

#include <algorithm>
#include <cmath>
#include <optional>

namespace corvath::training {
namespace {

using namespace algorithm::datatypes;
using math::metamodel::AppraisalData;
using math::metamodel::IndexVector;

constexpr std::int64_t kMaxElements = std::int64_t{1} << 20;  // as merged responses have at most

/// The record of a response or, for a name such as "s[2]", of an element of one.
SurrogateInfo MakeInfo(const std::wstring& name) {
  const SplitName parts = SplitIndexedName(name);
  const std::optional<std::int64_t> index = parts.GetIndex();
  if (index && *index >= 0 && *index < kMaxElements)
    return SurrogateInfo(parts.base, static_cast<std::uint64_t>(*index));
  return SurrogateInfo(name);
}

DesignId IdOfRow(Eigen::Index row) {
  return DesignId(static_cast<std::uint64_t>(row) + 1);
}

/// The lower median: a value of the column.
double MedianOf(Eigen::VectorXd column) {
  const auto middle = column.begin() + (column.size() - 1) / 2;
  std::nth_element(column.begin(), middle, column.end());
  return *middle;
}

Parameter MakeParameter(const std::wstring& name, const Eigen::VectorXd& column, bool discrete) {
  Parameter parameter(name);
  const double lower = column.minCoeff();
  const double upper = column.maxCoeff();
  if (IsConstantColumn(column)) {
    parameter.SetConst(true);
    parameter.SetReferenceValue(CDesignEntry(MedianOf(column)), false);
  } else if (discrete) {
    std::vector<CDesignEntry> states;
    for (const double value : column) states.emplace_back(value);
    parameter.SetDeterministicProperty(DeterministicProperties::Discrete(
        enums::DeterministicProperties::ORDINAL_BY_VALUE, std::move(states)));
    parameter.SetReferenceValue(CDesignEntry(MedianOf(column)), true);
  } else {
    parameter.SetDeterministicProperty(DeterministicProperties::Continuous(lower, upper));
    parameter.SetReferenceValue(CDesignEntry(lower + 0.5 * (upper - lower)), true);
  }
  return parameter;
}

}  // namespace

StudyWriter::StudyWriter(const TrainingTable& table, const TrainSettings& settings,
                         const CriterionSequence& criteria)
    : table_(table) {
  project_.GetAlgorithmInfo()->SetType(AlgorithmInfo::kZEL);
  project_.GetAlgorithmInfo()->GetZELInformation()->SetSamplingType(
      DetailedInformationBase::kDeterministicSampling);
  AddParameters();
  AddDesigns(criteria);
  AddSettings(settings);
}

void StudyWriter::AddParameters() {
  auto& zel = *project_.GetAlgorithmInfo()->GetZELInformation();
  EntrySequence reference;
  for (Eigen::Index j = 0; j < table_.points.cols(); ++j) {
    const std::wstring& name = table_.inputs[static_cast<std::size_t>(j)];
    const bool discrete =
        std::find(table_.discrete.begin(), table_.discrete.end(), name) != table_.discrete.end();
    const Parameter parameter = MakeParameter(name, table_.points.col(j), discrete);
    project_.GetParameterManager().AddParameter(parameter);
    reference.Append(name, parameter.GetReferenceValue());
    if (parameter.IsConst()) continue;
    columns_.push_back(j);
    names_.push_back(name);
    const double lower = table_.points.col(j).minCoeff();
    const double upper = table_.points.col(j).maxCoeff();
    zel.sampling_limits_.emplace_back(lower, upper);
    zel.defined_limits_.emplace_back(CDesignEntry(lower), CDesignEntry(upper));
  }
  zel.parameter_names_ = names_;
  uses_ = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(names_.size()));
  project_.SetReferenceDesign(Design(std::move(reference), DesignId(0)));
}

void StudyWriter::AddDesigns(const CriterionSequence& criteria) {
  calculator::CriteriaOptions options;
  options.allow_invalid_responses = true;  // what failed is told by the design itself
  calculator::CriteriaEvaluation evaluation(options);
  auto& stats = project_.GetDesignContainer().GetStats();
  for (Eigen::Index row = 0; row < table_.points.rows(); ++row) {
    EntrySequence parameters;
    for (Eigen::Index j = 0; j < table_.points.cols(); ++j)
      parameters.Append(table_.inputs[static_cast<std::size_t>(j)],
                        CDesignEntry(table_.points(row, j)));
    Design design(std::move(parameters), IdOfRow(row));
    EntrySequence responses;
    std::vector<std::wstring> failed;
    for (Eigen::Index k = 0; k < table_.values.cols(); ++k) {
      const std::wstring& name = table_.responses[static_cast<std::size_t>(k)];
      const double value = table_.values(row, k);
      responses.Append(name, std::isfinite(value) ? CDesignEntry(value) : CDesignEntry());
      if (!std::isfinite(value)) failed.push_back(name);
    }
    design.SetResponses(MergeIndexedResponses(std::move(responses)));
    design.SetCriteria(criteria);
    evaluation.Calculate(design);
    design.GetStatus().Clear();
    for (const std::wstring& name : failed)
      design.GetStatus().Add(RunInfoMeta(RunInfoMeta::UNUSABLE_RESPONSE, L"", name,
                                         {L"\"" + name + L"\" is not a number"}));
    design.SetRunState(Design::FINISHED);
    ++stats.total_;
    ++(failed.empty() ? stats.succeeded_ : stats.failed_);
    project_.GetDesignContainer().Add(std::move(design));
  }
  project_.GetCriteria() = criteria;
}

void StudyWriter::AddSettings(const TrainSettings& settings) {
  auto& zel = *project_.GetAlgorithmInfo()->GetZELInformation();
  zel::ZELCombinedSettings combined;
  combined.advanced_settings_.pzel_settings_ = RecordOf(settings);
  combined.advanced_settings_.num_parallel_ = 1;
  combined.automatic_settings_.num_parallel_ = 1;
  for (const Parameter& parameter : project_.GetParameterManager().GetAllParameters())
    combined.data_.parameters_.Append(parameter.GetName(), parameter.GetReferenceValue());
  for (const std::wstring& name : table_.responses) {
    combined.data_.responses_.Append(name, CDesignEntry());
    combined.data_.responses_usage_[name] = true;
    combined.data_.responses_zelability_[name] = true;
  }
  zel.zel_settings_ = std::move(combined);
  zel.num_samples_ = static_cast<std::uint64_t>(table_.points.rows());
  zel.calculated_models_ = boost::make_shared<ZELInformation::SubspaceResultContainer>();
  zel.best_models_ = boost::make_shared<ZELInformation::SubspaceResultContainer>();
}

void StudyWriter::AddModel(std::size_t response, const ChosenModel& chosen,
                           const std::vector<Eigen::Index>& rows) {
  auto& zel = *project_.GetAlgorithmInfo()->GetZELInformation();
  const std::wstring& name = table_.responses[response];
  SurrogateInfo info = MakeInfo(name);
  zel.response_to_cv_mapping_[info.GetResponseName()] = info.GetResponseName();
  const IndexVector& groups = chosen.model->GetSubsets();  // a loader finds their residuals there
  zel.cv_indexes_[name].assign(groups.begin(), groups.end());

  const math::metamodel::BitVector subspace = chosen.model->GetVariableSelection();
  Eigen::VectorXd single = chosen.results.singleCoPs;
  for (Eigen::Index j = 0; j < single.size(); ++j) {
    if (subspace[static_cast<std::size_t>(j)])
      uses_(j) += 1.0;
    else
      single(j) = std::nan("");  // an input that is left out has none
  }
  AppraisalData figures;
  figures.SetCoP(chosen.GetCoP());
  figures.SetCoD(chosen.results.CoD, chosen.results.CoDadj);
  figures.SetSingleCoPs(single);
  info.SetAppraisalData(figures);
  info.SetParameters(names_, subspace);
  info.SetSurrogate(chosen.model);
  SurrogateInfo::HidVector ids;
  for (const Eigen::Index row : rows) ids.push_back(IdOfRow(row));
  info.SetUsedHids(std::move(ids));
  zel.surrogate_infos_.AddOrReplace(std::move(info));

  for (const auto& candidate : chosen.tried) zel.calculated_models_->Add(name, candidate);
  zel.best_models_->Add(name, chosen.results);
  zel.function_strings_.push_back(chosen.model->GetModelFunction(names_));
}

VRDB StudyWriter::Finish() {
  auto& zel = *project_.GetAlgorithmInfo()->GetZELInformation();
  const double models = static_cast<double>(std::max<std::size_t>(table_.responses.size(), 1));
  for (const double uses : uses_) zel.relative_freq_of_importance_.push_back(uses / models);
  return std::move(project_);
}

}  // namespace corvath::training
