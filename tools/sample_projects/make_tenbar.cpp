// Makes the sample project: a study of the ten-bar truss with 150 analysed designs and one model for
// the mass, the largest displacement and each of the ten stresses. All four families of models
// serve some response.
//
//     make_tenbar zel_tenbar.vrdb

#include "design/parameters/parameter_manager.h"
#include "project/file/project_file.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"
#include "study.h"
#include "truss_study.h"

#include <exception>
#include <iostream>

namespace sample_projects {
namespace {

using namespace corvath::algorithm::datatypes;
using corvath::training::Family;
using corvath::training::ResponseData;

constexpr Eigen::Index kNumDesigns = 150;
constexpr std::uint32_t kSeed = 1969;
constexpr double kReferenceArea = 12.0;  // in^2

/// Which family serves a response. The families are spread so that each can be seen at work; a
/// study of one's own would take the best for each response.
TrainedModel Train(const std::wstring& response, const ResponseData& data) {
  if (response == L"displacement" || response == L"stress[7]")
    return TrainForms({{Family::kAnisotropicKriging, 0, false, false}}, data);
  if (response == L"stress[6]")
    return TrainForms({{Family::kIsotropicKriging, 0, false, false}}, data);
  if (response == L"stress[3]" || response == L"stress[4]")
    return TrainForms({{Family::kMovingLeastSquares, 1, false, false},
                       {Family::kMovingLeastSquares, 2, false, false}},
                      data);
  if (response == L"stress[8]") return TrainThinPlateSplines(data);
  return TrainPolynomial(data);
}

Design MakeDesign(const Eigen::RowVectorXd& areas, std::uint64_t id) {
  std::vector<std::pair<std::wstring, double>> parameters;
  Truss truss;
  for (int i = 0; i < kNumBars; ++i) {
    parameters.emplace_back(AreaName(i), areas(i));
    truss.areas[static_cast<std::size_t>(i)] = areas(i);
  }
  return AnalyseDesign(parameters, truss, id);
}

Study MakeStudy() {
  Study study = NewStudy(DetailedInformationBase::kDeterministicSampling);
  auto& zel = *study.project.GetAlgorithmInfo()->GetZELInformation();
  const CDesignEntry smallest(kSmallestArea);
  const CDesignEntry largest(kLargestArea);
  for (int i = 0; i < kNumBars; ++i) {
    study.inputs.push_back(AreaName(i));
    Parameter area(AreaName(i));
    area.SetUnit(L"in^2");
    area.SetDeterministicProperty(DeterministicProperties::Continuous(kSmallestArea, kLargestArea));
    area.SetReferenceValue(CDesignEntry(kReferenceArea), true);
    study.project.GetParameterManager().AddParameter(area);
    zel.defined_limits_.emplace_back(smallest, largest);
  }
  study.points = kSmallestArea + (kLargestArea - kSmallestArea) *
                                     SpaceFillingSample(kNumDesigns, kNumBars, kSeed).array();
  for (Eigen::Index d = 0; d < kNumDesigns; ++d)
    study.project.GetDesignContainer().Add(
        MakeDesign(study.points.row(d), static_cast<std::uint64_t>(d) + 1));
  study.project.SetReferenceDesign(
      MakeDesign(Eigen::RowVectorXd::Constant(kNumBars, kReferenceArea), 0));
  AddModels(study, Train);
  return study;
}

}  // namespace
}  // namespace sample_projects

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_tenbar FILE\n";
    return 2;
  }
  try {
    corvath::algorithm::datatypes::SaveProjectFile(sample_projects::MakeStudy().project, argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "make_tenbar: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
