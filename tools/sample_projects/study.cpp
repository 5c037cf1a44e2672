#include "study.h"

#include "design/criterion.h"
#include "design/designs/design_manager.h"
#include "doe/doe.h"
#include "project/models/surrogate_info.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"

#include <algorithm>
#include <cmath>

namespace sample_projects {
namespace {

using namespace corvath::algorithm::datatypes;
using corvath::math::Variant;
using corvath::math::metamodel::AppraisalData;
using corvath::training::ResponseData;

constexpr std::uint32_t kNumGroups = 10;
constexpr std::uint32_t kSeedOfGroups = 1;

CriterionSequence MakeCriteria() {
  CriterionSequence criteria;
  const auto add = [&](const wchar_t* name, Criterion::eType type, const wchar_t* lhs,
                       const wchar_t* rhs) { criteria.Append(name, Criterion(type, lhs, rhs)); };
  add(L"obj_mass", CriterionDescription::RHS, L"", L"mass");
  add(L"stress_limit", CriterionDescription::LIMIT_LHS_BELOW_RHS, L"max(abs(stress))", L"25");
  add(L"displacement_limit", CriterionDescription::LIMIT_LHS_BELOW_RHS, L"displacement", L"2");
  add(L"cost", CriterionDescription::RHS_ANY, L"", L"0.8*mass+150*displacement");
  add(L"cost_per_mass", CriterionDescription::RHS_ANY, L"", L"cost/obj_mass");
  return criteria;
}

/// The record of a trained model.
SurrogateInfo Complete(SurrogateInfo info, const Study& study, const TrainedModel& trained) {
  AppraisalData figures;
  figures.SetCoP(trained.results.CoP);
  figures.SetCoD(trained.results.CoD, trained.results.CoDadj);
  Eigen::VectorXd single = trained.results.singleCoPs;
  for (Eigen::Index i = 0; i < single.size(); ++i)  // an input that is left out has none
    if (!trained.subspace[static_cast<std::size_t>(i)]) single(i) = std::nan("");
  figures.SetSingleCoPs(single);
  info.SetParameters(study.inputs, trained.subspace);
  info.SetAppraisalData(figures);
  info.SetSurrogate(trained.model);
  std::vector<DesignId> used;
  for (const Design& design : study.project.GetDesignContainer().GetDesigns())
    used.push_back(design.GetId());
  info.SetUsedHids(std::move(used));
  return info;
}

}  // namespace

Eigen::MatrixXd SpaceFillingSample(Eigen::Index n, Eigen::Index d, std::uint32_t seed) {
  corvath::math::DOE sample(static_cast<std::uint64_t>(d), seed);
  sample.Build(corvath::math::kSpaceFillingLatinHypercube, static_cast<std::uint64_t>(n),
               /*append=*/false);
  return 0.5 * (sample.GetMatrix().array() + 1.0);
}

Study NewStudy(std::int32_t sampling_type) {
  Study study;
  study.project.GetAlgorithmInfo()->SetType(AlgorithmInfo::kZEL);
  study.project.GetAlgorithmInfo()->GetZELInformation()->SetSamplingType(sampling_type);
  study.project.GetCriteria() = MakeCriteria();
  return study;
}

Design AnalyseDesign(const std::vector<std::pair<std::wstring, double>>& parameters,
                     const Truss& truss, std::uint64_t id) {
  EntrySequence entries;
  for (const auto& [name, value] : parameters) entries.Append(name, CDesignEntry(value));
  const TrussResponse response = AnalyseTenBarTruss(truss);
  Variant<double>::Vector stress(kNumBars);
  std::copy(response.stresses.begin(), response.stresses.end(), stress.begin());
  EntrySequence responses;
  responses.Append(L"mass", CDesignEntry(response.mass));
  responses.Append(L"displacement", CDesignEntry(response.displacement));
  responses.Append(L"stress", CDesignEntry(Variant<double>(std::move(stress))));
  Design design(std::move(entries), DesignId(id));
  design.SetResponses(std::move(responses));
  design.SetCriteria(MakeCriteria());
  design.SetRunState(Design::FINISHED);
  return design;
}

void AddModels(Study& study,
               const std::function<TrainedModel(const std::wstring&, const ResponseData&)>& train) {
  auto& zel = *study.project.GetAlgorithmInfo()->GetZELInformation();
  const DesignManager& designs = study.project.GetDesignContainer();
  const auto widths = designs.GetModelResponseWidths();
  const auto names = DesignManager::GetResponseNames(widths);
  const Eigen::MatrixXd responses = designs.GetResponseMatrix(widths);
  for (const auto& [response, width] : widths) {
    zel.response_to_cv_mapping_[response] = response;
    for (std::int64_t element = 0; element < std::max<std::int64_t>(width, 1); ++element) {
      SurrogateInfo info = width == 0
                               ? SurrogateInfo(response)
                               : SurrogateInfo(response, static_cast<std::uint64_t>(element));
      const auto column = std::find(names.begin(), names.end(), info.GetFullName()) - names.begin();
      const ResponseData data = corvath::training::MakeResponseData(
          study.points, responses.col(column), kNumGroups, kSeedOfGroups);
      const TrainedModel trained = train(info.GetFullName(), data);
      zel.cv_indexes_[response].assign(data.groups.begin(), data.groups.end());
      zel.surrogate_infos_.AddOrReplace(Complete(std::move(info), study, trained));
    }
  }
  zel.num_samples_ = static_cast<std::uint64_t>(study.points.rows());
  zel.parameter_names_ = study.inputs;
  for (Eigen::Index i = 0; i < study.points.cols(); ++i)
    zel.sampling_limits_.emplace_back(study.points.col(i).minCoeff(),
                                      study.points.col(i).maxCoeff());
}

}  // namespace sample_projects
