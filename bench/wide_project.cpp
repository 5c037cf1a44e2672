#include "wide_project.h"

#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/linear_regression_settings.h"
#include "project/models/surrogate_info.h"
#include "project/models/surrogate_info_container.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"

#include <boost/make_shared.hpp>

namespace bench {

using namespace corvath::algorithm::datatypes;
using corvath::math::Variant;
using corvath::math::metamodel::LinearRegression;
using corvath::math::metamodel::LinearRegressionSettings;
using corvath::math::metamodel::SurrogateBase;

VRDB MakeProject(const Eigen::MatrixXd& points, const Eigen::MatrixXd& values,
                 const std::vector<boost::shared_ptr<SurrogateBase>>& models) {
  VRDB project;
  project.GetAlgorithmInfo()->SetType(AlgorithmInfo::kZEL);
  auto& zel = *project.GetAlgorithmInfo()->GetZELInformation();
  zel.SetSamplingType(DetailedInformationBase::kDeterministicSampling);

  std::vector<std::wstring> names;
  for (Eigen::Index i = 0; i < points.cols(); ++i) {
    names.push_back(L"x" + std::to_wstring(i));
    Parameter parameter(names.back());
    parameter.SetDeterministicProperty(DeterministicProperties::Continuous(-1.0, 1.0));
    parameter.SetReferenceValue(CDesignEntry(0.0), true);
    project.GetParameterManager().AddParameter(parameter);
  }
  SurrogateInfo::HidVector ids;
  for (Eigen::Index d = 0; d < points.rows(); ++d) {
    EntrySequence parameters;
    for (Eigen::Index i = 0; i < points.cols(); ++i)
      parameters.Append(names[static_cast<std::size_t>(i)], CDesignEntry(points(d, i)));
    ids.emplace_back(static_cast<std::uint64_t>(d) + 1);
    Design design(std::move(parameters), ids.back());
    Variant<double>::Vector response(static_cast<std::size_t>(values.cols()));
    for (Eigen::Index k = 0; k < values.cols(); ++k)
      response[static_cast<std::size_t>(k)] = values(d, k);
    EntrySequence responses;
    responses.Append(L"y", CDesignEntry(Variant<double>(std::move(response))));
    design.SetResponses(std::move(responses));
    project.GetDesignContainer().Add(std::move(design));
  }

  for (std::size_t k = 0; k < models.size(); ++k) {
    SurrogateInfo info(L"y", k);
    info.SetSurrogate(models[k]);
    info.SetParameters(names, std::vector<bool>(names.size(), true));
    info.SetUsedHids(ids);
    zel.surrogate_infos_.AddOrReplace(std::move(info));
  }
  return project;
}

VRDB MakeWideProject(Eigen::Index num_designs, Eigen::Index num_inputs, Eigen::Index num_models) {
  const Eigen::MatrixXd points = Eigen::MatrixXd::Random(num_designs, num_inputs);
  const Eigen::MatrixXd values =
      (points * Eigen::MatrixXd::Random(num_inputs, num_models)).array().sin();
  LinearRegressionSettings settings(static_cast<std::uint64_t>(num_inputs));
  settings.SetOrder(2);
  std::vector<boost::shared_ptr<SurrogateBase>> models;
  for (Eigen::Index k = 0; k < num_models; ++k) {
    const auto model =
        boost::make_shared<LinearRegression>(points, Eigen::VectorXd(values.col(k)), settings);
    model->Build();
    model->BuildErrors();
    models.push_back(model);
  }
  return MakeProject(points, values, models);
}

}  // namespace bench
