// Makes the second sample project: the ten-bar truss whose modulus, loads and three areas scatter,
// with models over these random inputs.
//
//     make_tenbar_random zel_tenbar_random.vrdb

#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "project/file/project_file.h"
#include "project/records/algorithm_info.h"
#include "project/records/detailed_information.h"
#include "stochastics/normal_quantile.h"
#include "stochastics/rv_set.h"
#include "study.h"
#include "truss_study.h"

#include <algorithm>
#include <exception>
#include <iostream>

namespace sample_projects {
namespace {

using namespace corvath::algorithm::datatypes;
namespace RandomVariable = corvath::enums::RandomVariable;

constexpr Eigen::Index kNumDesigns = 120;
constexpr std::uint32_t kSeed = 1971;
constexpr double kArea = 12.0;  // in^2, of all bars in the mean

/// The scatter of an input, by its moments or by the parameters of its distribution.
RandomProperties Scatter(RandomVariable::eType type, std::vector<double> moments,
                         std::vector<double> parameters = {}) {
  RandomProperties properties;
  properties.SetType(type);
  properties.SetKind(1);
  properties.SetMoments(std::move(moments));
  properties.SetParams(std::move(parameters));
  return properties;
}

ParameterManager MakeParameters() {
  ParameterManager parameters;
  const auto add = [&](const wchar_t* name, const wchar_t* unit, double reference,
                       const RandomProperties& scatter) {
    Parameter parameter(name);
    parameter.SetUnit(unit);
    parameter.SetRandomProperties(scatter);
    parameter.SetReferenceValue(CDesignEntry(reference), true);
    parameters.AddParameter(parameter);
  };
  add(L"modulus", L"ksi", 1e4, Scatter(RandomVariable::LOGNORMAL, {1e4, 500.0}));
  add(L"load_outer", L"kips", 100.0, Scatter(RandomVariable::GUMBEL, {100.0, 12.0}));
  add(L"load_inner", L"kips", 100.0, Scatter(RandomVariable::NORMAL, {100.0, 10.0}));
  for (const int bar : {0, 2, 6}) {
    // Optimisation may move it, and it scatters: a mixed parameter. In a set of random variables
    // these come before the others, whatever the order here.
    Parameter area(AreaName(bar));
    area.SetUnit(L"in^2");
    area.SetDeterministicProperty(DeterministicProperties::Continuous(kSmallestArea, kLargestArea));
    area.SetReferenceValue(CDesignEntry(kArea), true);
    area.SetRandomProperties(
        Scatter(RandomVariable::TRUNCATEDNORMAL, {}, {kArea, 0.6, kArea - 1.5, kArea + 1.5}));
    parameters.AddParameter(area);
  }
  parameters.GetCoherences().Set(L"load_outer", L"load_inner", 0.6);
  parameters.GetCoherences().Set(L"area_1", L"area_3", 0.4);  // bars of one batch
  return parameters;
}

Truss MakeTruss(const std::vector<std::pair<std::wstring, double>>& values) {
  Truss truss;
  truss.areas.fill(kArea);
  for (const auto& [name, value] : values) {
    if (name == L"modulus") truss.modulus = value;
    if (name == L"load_outer") truss.loads[0] = value;
    if (name == L"load_inner") truss.loads[1] = value;
    for (int bar = 0; bar < kNumBars; ++bar)
      if (name == AreaName(bar)) truss.areas[static_cast<std::size_t>(bar)] = value;
  }
  return truss;
}

/// A space-filling sample of independent standard normal variables, mapped to the inputs.
/// @return one row per design, one column per variable of the set
Eigen::MatrixXd SampleInputs(const corvath::algorithm::RVSet& variables) {
  const Eigen::MatrixXd unit =
      SpaceFillingSample(kNumDesigns, static_cast<Eigen::Index>(variables.GetNumRVs()), kSeed);
  const Eigen::MatrixXd normal =
      unit.unaryExpr([](double p) { return corvath::math::NormalQuantile(p); });
  return variables.FromStandardGauss(normal.transpose()).transpose();
}

Study MakeStudy() {
  Study study = NewStudy(DetailedInformationBase::kStochasticSampling);
  auto& manager = study.project.GetParameterManager();
  manager = MakeParameters();
  const auto variables = ParameterManagerToRVSet(manager, Design());
  study.inputs = GetVariableNames(*variables);
  study.points = SampleInputs(*variables);
  for (Eigen::Index d = 0; d < kNumDesigns; ++d) {
    // A design lists its parameters in the order of the manager.
    std::vector<std::pair<std::wstring, double>> values;
    for (const Parameter& parameter : manager.GetAllParameters()) {
      const auto at = std::find(study.inputs.begin(), study.inputs.end(), parameter.GetName());
      values.emplace_back(parameter.GetName(), study.points(d, at - study.inputs.begin()));
    }
    study.project.GetDesignContainer().Add(
        AnalyseDesign(values, MakeTruss(values), static_cast<std::uint64_t>(d) + 1));
  }
  using corvath::training::Family;
  AddModels(study, [](const std::wstring& response, const corvath::training::ResponseData& data) {
    return response == L"displacement"
               ? TrainForms({{Family::kAnisotropicKriging, 0, false, false}}, data)
               : TrainPolynomial(data);
  });
  return study;
}

}  // namespace
}  // namespace sample_projects

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_tenbar_random FILE\n";
    return 2;
  }
  try {
    corvath::algorithm::datatypes::SaveProjectFile(sample_projects::MakeStudy().project, argv[1]);
  } catch (const std::exception& error) {
    std::cerr << "make_tenbar_random: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
