#pragma once

#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"
#include "support/stand_in.h"

#include <boost/shared_ptr.hpp>

#include <vector>

/// Writers of the stored form of the surrogates' base classes in every class version.
namespace support {

struct SurrogateBaseTag;
struct SettingsBaseTag;

/// What a stored settings object holds; the numbers that have no setter are given apart.
struct SettingsFields {
  const corvath::math::metamodel::SurrogateSettingsBase& settings;
  std::int32_t handle_failed;
  corvath::math::metamodel::SettingsState state;
};

template <int Version>
StandIn<SettingsBaseTag, Version> StoredSettings(const SettingsFields& fields) {
  return {[&fields](corvath::portable_binary_oarchive& ar) {
    const auto& settings = fields.settings;
    Put(ar, "ninputs_", settings.GetNumberInputs());
    Put(ar, "coord_transform_", static_cast<std::int32_t>(settings.GetCoordTransform()));
    Put(ar, "coord_transform_parameter_", settings.GetCoordTransformParameter());
    Put(ar, "value_transform_", static_cast<std::int32_t>(settings.GetValueTransform()));
    Put(ar, "value_transform_parameter_", settings.GetValueTransformParameter());
    Put(ar, "handle_failed_", fields.handle_failed);
    Put(ar, "state_", static_cast<std::int32_t>(fields.state));
    if (Version >= 1) {
      Put(ar, "limit_transform_", static_cast<std::int32_t>(settings.GetLimitTransform()));
      Put(ar, "limit_transform_parameter_", settings.GetLimitTransformParameter());
    }
    if (Version >= 2) Put(ar, "input_names_", settings.GetInputNames());
  }};
}

/// The design matrix at the support points, as a regression keeps it.
inline Eigen::MatrixXd RegressionMatrixOf(const corvath::math::metamodel::LinearRegression& model) {
  const auto& settings = model.GetSettingsBase();
  return corvath::math::metamodel::BuildRegressionMatrix(
      model.GetTransCoord()->Forward(model.GetPoints()), settings.GetMainTermSelection(),
      settings.GetInteractionSelection());
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
template <int Version>
StandIn<SurrogateBaseTag, Version> StoredSurrogate(
    const corvath::math::metamodel::SurrogateBase& model) {
  using corvath::math::transform::Transform;
  // The archive knows objects by their addresses: the copies live as long as the stand-in.
  std::vector<boost::shared_ptr<Transform>> copies;
  for (const Transform* trans :
       {model.GetTransCoord(), model.GetTransValue(), model.GetTransLimit()})
    copies.emplace_back(trans ? trans->Clone() : nullptr);
  return {[&model, copies](corvath::portable_binary_oarchive& ar) {
    Put(ar, "points_", model.GetPoints());
    Put(ar, "values_", model.GetValues());
    if (Version >= 2) {
      Put(ar, "points_trans_reduced_", TransformedAndReduced(model));
      Put(ar, "residuals_", model.GetResiduals());
    }
    if (Version >= 3) Put(ar, "subsets_", model.GetSubsets());
    Put(ar, "need_build_", false);
    Put(ar, "trans_coord_", copies[0]);
    Put(ar, "trans_value_", copies[1]);
    if (Version >= 1) Put(ar, "weights_", model.GetWeights());
    if (Version >= 4) Put(ar, "trans_limit_", copies[2]);
    if (Version >= 5) Put(ar, "single_cops_", model.GetSingleCoPs());
    if (Version >= 6) Put(ar, "points_radii_mean_", model.GetPointsRadiiMean());
    if (Version >= 7) Put(ar, "weight_error_radius_", model.GetWeightErrorRadius());
  }};
}

}  // namespace support
