#pragma once

#include "project/settings/zel_settings.h"

#include <cstdint>

namespace corvath::training {

/// How models are trained. What stands in `models` is stored with the project.
struct TrainSettings {
  /// All families compete.
  TrainSettings() { models.use_anisotropic_Kriging_ = true; }

  /// Families and orders that compete, filters of inputs, tolerances. The switches that count:
  /// use_boxcox_, use_polynomials_, max_order_polynomial_, use_MLS_, max_order_MLS_, use_Kriging_,
  /// use_anisotropic_Kriging_; the filters and their limits, that of input correlations excepted;
  /// toleranceCoP_variables_ (inputs that a leader may spare); coeff_factor_*: designs that a model needs for each coefficient.
  math::metamodel::ZELSettings models;
  /// Of the cross-validation groups; the same seed gives the same groups on every machine.
  std::uint32_t seed = 1;
  /// Of cross-validation, at least 2; no more are made than there are designs. Each model is judged
  /// without one group in turn: with few groups it is judged from clearly fewer designs than it has
  /// in the end, which costs models with many coefficients more than others.
  std::uint32_t num_groups = 20;
  /// What the training may cost, in seconds of one core of some 2e9 operations a second. Counted in
  /// operations: a budget gives the same models on every machine. The first candidate of each family
  /// is fitted whatever it costs.
  double budget_seconds = 60.0;
};

}  // namespace corvath::training
