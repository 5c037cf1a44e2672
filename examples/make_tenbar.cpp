// Makes the sample project: a study of the ten-bar truss with 150 analysed designs and one model for
// the mass, the largest displacement and each of the ten stresses. All four families of models
// serve some response.
//
//     make_tenbar zel_tenbar.vrdb

#include "design/criterion.h"
#include "design/design_manager.h"
#include "design/parameter_manager.h"
#include "metamodel/surrogate_info.h"
#include "metamodel/surrogate_info_container.h"
#include "project/algorithm_info.h"
#include "project/project_file.h"
#include "project/vrdb.h"
#include "project/zel_information.h"
#include "space_filling_sample.h"
#include "ten_bar_truss.h"
#include "trained_model.h"
#include "truss_study.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>

namespace examples {
namespace {

using namespace corvath::algorithm::datatypes;
using corvath::math::Variant;
using corvath::math::metamodel::AppraisalData;
using corvath::math::metamodel::IndexVector;

constexpr Eigen::Index kNumDesigns = 150;
constexpr std::uint64_t kNumGroups = 10;
constexpr std::uint32_t kSeed = 1969;
constexpr double kReferenceArea = 12.0;  // in^2

ParameterManager MakeParameters() {
  ParameterManager parameters;
  for (int i = 0; i < kNumBars; ++i) {
    Parameter area(AreaName(i));
    area.SetUnit(L"in^2");
    area.SetDeterministicProperty(DeterministicProperties::Continuous(kSmallestArea, kLargestArea));
    area.SetReferenceValue(CDesignEntry(kReferenceArea), true);
    parameters.AddParameter(area);
  }
  return parameters;
}

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

Design MakeDesign(const Eigen::RowVectorXd& areas, std::uint64_t id) {
  EntrySequence parameters;
  std::array<double, kNumBars> bars{};
  for (int i = 0; i < kNumBars; ++i) {
    bars[static_cast<std::size_t>(i)] = areas(i);
    parameters.Append(AreaName(i), CDesignEntry(areas(i)));
  }
  const TrussResponse truss = AnalyseTenBarTruss(bars);
  Variant<double>::Vector stress(kNumBars);
  std::copy(truss.stresses.begin(), truss.stresses.end(), stress.begin());
  Design design(std::move(parameters), DesignId(id));
  EntrySequence responses;
  responses.Append(L"mass", CDesignEntry(truss.mass));
  responses.Append(L"displacement", CDesignEntry(truss.displacement));
  responses.Append(L"stress", CDesignEntry(Variant<double>(std::move(stress))));
  design.SetResponses(std::move(responses));
  design.SetCriteria(MakeCriteria());
  design.SetRunState(Design::FINISHED);
  return design;
}

/// Groups of nearly equal size, in the random order that the sample already has.
IndexVector MakeGroups() {
  IndexVector groups(kNumDesigns);
  for (Eigen::Index i = 0; i < kNumDesigns; ++i)
    groups(i) = static_cast<std::uint64_t>(i) % kNumGroups;
  return groups;
}

/// Which family serves a response. The families are spread so that each can be seen at work; a
/// study of one's own would take the best for each response.
TrainedModel Train(const std::wstring& response, const TrainingData& data) {
  if (response == L"displacement") return TrainKriging(data, /*anisotropic=*/true);
  if (response == L"stress[3]" || response == L"stress[4]") return TrainMovingLeastSquares(data);
  if (response == L"stress[6]") return TrainKriging(data, /*anisotropic=*/false);
  if (response == L"stress[7]") return TrainKriging(data, /*anisotropic=*/true);
  if (response == L"stress[8]") return TrainThinPlateSplines(data);
  return TrainPolynomial(data);
}

class Study {
 public:
  Study()
      : areas_(SampleAreas(kNumDesigns, kSeed)),
        groups_(MakeGroups()),
        zel_(*project_.GetAlgorithmInfo()->GetZELInformation()) {}

  VRDB& Make() {
    project_.GetParameterManager() = MakeParameters();
    for (Eigen::Index i = 0; i < kNumDesigns; ++i)
      project_.GetDesignContainer().Add(
          MakeDesign(areas_.row(i), static_cast<std::uint64_t>(i) + 1));
    const auto widths = project_.GetDesignContainer().GetModelResponseWidths();
    const auto names = DesignManager::GetResponseNames(widths);
    const Eigen::MatrixXd responses = project_.GetDesignContainer().GetResponseMatrix(widths);
    zel_.SetSamplingType(DetailedInformationBase::kDeterministicSampling);
    for (const auto& [response, width] : widths) {
      zel_.response_to_cv_mapping_[response] = response;
      zel_.cv_indexes_[response].assign(groups_.begin(), groups_.end());
      for (std::int64_t element = 0; element < std::max<std::int64_t>(width, 1); ++element)
        AddModel(width == 0 ? SurrogateInfo(response)
                            : SurrogateInfo(response, static_cast<std::uint64_t>(element)),
                 names, responses);
    }
    zel_.num_samples_ = kNumDesigns;
    for (int i = 0; i < kNumBars; ++i) {
      zel_.parameter_names_.push_back(AreaName(i));
      zel_.sampling_limits_.emplace_back(areas_.col(i).minCoeff(), areas_.col(i).maxCoeff());
      zel_.defined_limits_.emplace_back(CDesignEntry(kSmallestArea), CDesignEntry(kLargestArea));
    }
    project_.GetCriteria() = MakeCriteria();
    project_.SetReferenceDesign(
        MakeDesign(Eigen::RowVectorXd::Constant(kNumBars, kReferenceArea), 0));
    return project_;
  }

 private:
  void AddModel(SurrogateInfo info, const std::vector<std::wstring>& names,
                const Eigen::MatrixXd& responses) {
    const auto column = std::find(names.begin(), names.end(), info.GetFullName()) - names.begin();
    const Eigen::VectorXd values = responses.col(column);
    const TrainedModel trained = Train(info.GetFullName(), {areas_, values, groups_});
    std::vector<std::wstring> inputs;
    for (int i = 0; i < kNumBars; ++i) inputs.push_back(AreaName(i));
    AppraisalData figures;
    figures.SetCoP(trained.cop);
    figures.SetCoD(trained.cod, trained.cod_adjusted);
    Eigen::VectorXd single = trained.single_cops;
    for (Eigen::Index i = 0; i < single.size(); ++i)  // an input that is left out has none
      if (!trained.subspace[static_cast<std::size_t>(i)]) single(i) = std::nan("");
    figures.SetSingleCoPs(single);
    info.SetParameters(inputs, trained.subspace);
    info.SetAppraisalData(figures);
    info.SetSurrogate(trained.model);
    std::vector<DesignId> used;
    for (const Design& design : project_.GetDesignContainer().GetDesigns())
      used.push_back(design.GetId());
    info.SetUsedHids(std::move(used));
    zel_.surrogate_infos_.AddOrReplace(std::move(info));
  }

  static VRDB NewProject() {
    VRDB project;
    project.GetAlgorithmInfo()->SetType(AlgorithmInfo::kZEL);
    return project;
  }

  VRDB project_ = NewProject();
  Eigen::MatrixXd areas_;
  IndexVector groups_;
  ZELInformation& zel_;
};

}  // namespace
}  // namespace examples

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_tenbar FILE\n";
    return 2;
  }
  try {
    examples::Study study;
    corvath::algorithm::datatypes::SaveProjectFile(study.Make(), argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "make_tenbar: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
