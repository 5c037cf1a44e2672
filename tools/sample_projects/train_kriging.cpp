#include "metamodel/kriging/ordinary_kriging.h"
#include "metamodel/kriging/ordinary_kriging_settings.h"
#include "trained_model.h"

#include <boost/make_shared.hpp>

#include <stdexcept>

namespace sample_projects {

using corvath::math::metamodel::KernelType;
using corvath::math::metamodel::OrdinaryKriging;
using corvath::math::metamodel::OrdinaryKrigingSettings;

TrainedModel TrainKriging(const TrainingData& data, bool anisotropic) {
  OrdinaryKrigingSettings settings(static_cast<std::uint64_t>(data.points.cols()));
  settings.SetKernelType(anisotropic ? KernelType::kConstInflExp : KernelType::kConstInflIsoExp);
  const auto model = boost::make_shared<OrdinaryKriging>(data.points, data.values, settings);
  if (!model->BuildOptimal(data.groups)) throw std::runtime_error("kriging cannot be fitted");
  model->BuildErrors(data.groups);
  TrainedModel trained;
  trained.model = model;
  trained.subspace = model->GetVariableSelection();
  trained.cop = data.Determination(model->ApproximateCrossValidation(data.groups));
  trained.cod = data.Determination(model->ApproximateSupportPoints());
  trained.cod_adjusted = trained.cod;  // an interpolation has no count of coefficients
  // With one radius per input an input leaves with its radius, and the others stay.
  if (!anisotropic) trained.single_cops = model->ComputeSingleCoPs(data.groups);
  model->SetSingleCoPs(trained.single_cops);
  return trained;
}

}  // namespace sample_projects
