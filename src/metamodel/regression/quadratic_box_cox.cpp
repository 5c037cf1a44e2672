#include "metamodel/regression/quadratic_box_cox.h"

#include "metamodel/regression/linear_regression.h"

namespace corvath::math::metamodel {

namespace {

using transform::Transform;
using transform::TransformType;

TransformType TypeOf(const Transform* trans) {
  return trans ? trans->GetType() : TransformType::kNone;
}

std::vector<double> ParametersOf(const Transform* trans) {
  return trans ? trans->GetParameters() : std::vector<double>();
}

}  // namespace

ValueTransformChoice FitQuadraticBoxCox(const SurrogateBase& model,
                                        const std::function<void()>& interruption_point) {
  LinearRegressionSettings settings(static_cast<std::uint64_t>(model.GetPoints().cols()));
  settings.SetOrder(2);
  settings.SetCoordTransform(TypeOf(model.GetTransCoord()));
  settings.SetCoordTransformParameter(ParametersOf(model.GetTransCoord()));
  settings.SetValueTransform(TypeOf(model.GetTransValue()));
  settings.SetValueTransformParameter(ParametersOf(model.GetTransValue()));
  settings.SetVariableSelection(model.GetVariableSelection());
  LinearRegression regression(model.GetPoints(), model.GetValues(), settings);
  if (!regression.IsSolvable()) {
    settings.SetInteractionSelection({});
    regression.Initialize(settings);
  }
  if (!regression.IsSolvable()) {
    settings.SetOrder(1);
    settings.SetVariableSelection(model.GetVariableSelection());
    regression.Initialize(settings);
  }
  if (interruption_point) interruption_point();
  regression.BuildBoxCox();
  return {TypeOf(regression.GetTransValue()), ParametersOf(regression.GetTransValue())};
}

}  // namespace corvath::math::metamodel
