#pragma once

#include "metamodel/regression/linear_regression.h"
#include "support/stored_form.h"

#include <boost/shared_ptr.hpp>

#include <vector>

/// Stored forms of the surrogates' base classes.
namespace support {

/// The base part of a model of two inputs; equality leaves the state and `handle_failed_` out.
inline StoredForm<corvath::math::metamodel::SurrogateSettingsBase, false> SettingsBaseForm() {
  using S = corvath::math::metamodel::SurrogateSettingsBase;
  using corvath::math::transform::TransformType;
  using Numbers = std::vector<double>;
  StoredForm<S, false> form(2);
  form.Field("ninputs_", &S::GetNumberInputs, 2, Since(0), 3);
  form.Field("coord_transform_", &S::GetCoordTransform, TransformType::kMinMax, Since(0),
             TransformType::kNone);
  form.Field("coord_transform_parameter_", &S::GetCoordTransformParameter, Numbers{-1.0, 1.0},
             Since(0));
  form.Field("value_transform_", &S::GetValueTransform, TransformType::kBoxCox, Since(0),
             TransformType::kNone);
  form.Field("value_transform_parameter_", &S::GetValueTransformParameter, Numbers{0.5, 0.1, 10.1},
             Since(0));
  form.Raw("handle_failed_", std::int32_t{7});
  form.Uncompared("state_", &S::GetState, corvath::math::metamodel::SettingsState::kOptimized);
  form.Field("limit_transform_", &S::GetLimitTransform, TransformType::kLimits, Since(1),
             TransformType::kNone);
  form.Field("limit_transform_parameter_", &S::GetLimitTransformParameter, Numbers{0.0, 1.0},
             Since(1));
  form.Field("input_names_", &S::GetInputNames, {L"first", L"zweit\u00e4"}, Since(2));
  return form;
}

/// The support points in the coordinates of `model`, without the inputs that it does not use.
inline Eigen::MatrixXd TransformedAndReduced(const corvath::math::metamodel::SurrogateBase& model) {
  const Eigen::MatrixXd points = model.GetTransCoord()->Forward(model.GetPoints());
  std::vector<Eigen::Index> used;
  const std::vector<bool> selection = model.GetVariableSelection();
  for (Eigen::Index j = 0; j < points.cols(); ++j)
    if (selection[static_cast<std::size_t>(j)]) used.push_back(j);
  return points(Eigen::all, used);
}

/// The base part of `model`, which has a coordinate transform and is built.
inline StoredForm<corvath::math::metamodel::SurrogateBase, false> SurrogateBaseForm(
    const corvath::math::metamodel::SurrogateBase& model) {
  using S = corvath::math::metamodel::SurrogateBase;
  using corvath::math::transform::Transform;
  const auto copy = [](const Transform* transform) {
    return boost::shared_ptr<Transform>(transform ? transform->Clone() : nullptr);
  };
  const auto limit_name = [](const S& m) {
    return m.GetTransLimit() ? m.GetTransLimit()->GetName() : std::wstring();
  };
  StoredForm<S, false> form(7);
  form.Uncompared("points_", &S::GetPoints, model.GetPoints());
  form.Uncompared("values_", &S::GetValues, model.GetValues());
  form.Raw("points_trans_reduced_", TransformedAndReduced(model), Since(2));
  form.Uncompared("residuals_", &S::GetResiduals, model.GetResiduals(), Since(2));
  form.Uncompared("subsets_", &S::GetSubsets, model.GetSubsets(), Since(3));
  form.Raw("need_build_", false);
  form.Raw("trans_coord_", copy(model.GetTransCoord()));
  form.Raw("trans_value_", copy(model.GetTransValue()));
  form.Shows([](const S& m) { return m.GetDescription(); }, model.GetDescription(), Since(4));
  form.Uncompared("weights_", &S::GetWeights, model.GetWeights(), Since(1));
  form.Raw("trans_limit_", copy(model.GetTransLimit()), Since(4));
  form.Shows(limit_name, limit_name(model), Since(4));
  form.Shows(limit_name, L"", Until(3));
  form.Uncompared("single_cops_", &S::GetSingleCoPs, model.GetSingleCoPs(), Since(5));
  form.Uncompared("points_radii_mean_", &S::GetPointsRadiiMean, model.GetPointsRadiiMean(),
                  Since(6));
  form.Uncompared("weight_error_radius_", &S::GetWeightErrorRadius, model.GetWeightErrorRadius(),
                  Since(7));
  return form;
}

/// Writes `pointer` and expects the export key of its object, which stands behind its length, a
/// 16-bit number.
template <class T>
void ExpectExportKey(const boost::shared_ptr<T>& pointer, const std::string& key) {
  const std::string stored = std::string{static_cast<char>(key.size()), '\0'} + key;
  EXPECT_NE(Save(pointer).find(stored), std::string::npos) << key;
}

}  // namespace support
