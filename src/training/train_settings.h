#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace corvath::training {

/// Which forms of models compete (candidate.h).
struct ModelChoice {
  bool polynomials = true;  ///< least squares and ridge regressions
  std::uint64_t max_polynomial_order = 2;
  bool moving_least_squares = true;
  std::uint64_t max_moving_least_squares_order = 2;
  bool isotropic_kriging = true;
  bool anisotropic_kriging = true;
  bool box_cox = true;  ///< each form besides on the transformed response
  /// Designs that a model needs for each of its coefficients; at least 1 counts. Ridge regressions
  /// need no number.
  double designs_per_coefficient = 2.0;
  double designs_per_coefficient_of_local_models = 8.0;  ///< moving least squares and kriging
  /// Predictions are kept within, in the units of the responses; otherwise within the range of each
  /// response and half of it beyond.
  std::optional<std::pair<double, double>> limits;
};

/// Which subsets of the inputs are worth a model (subspace_filters.h). A filter works at its levels
/// `step`, 2 `step`, ... up to `largest`.
struct InputFilters {
  struct Levels {
    double largest;
    double step;
  };
  std::vector<std::uint64_t> always;  ///< inputs that every model has
  bool by_significance = true;
  double min_significance = 0.95;
  double significance_step = 0.01;
  bool by_correlation = true;
  std::uint64_t correlation_steps = 10;
  bool rank_correlation = false;  ///< Spearman's, not Pearson's
  bool by_importance = true;
  Levels importance{0.05, 0.01};
  bool by_quality = true;
  Levels quality{0.05, 0.01};
  bool adjusted_determination = true;  ///< for the number of coefficients
  /// Single CoP below which a leader proposes to spare an input.
  double spared_cop = 0.01;
};

/// How models are trained.
struct TrainSettings {
  ModelChoice models;
  InputFilters filters;
  /// Candidates are compared by the CoP that is adjusted for the number of coefficients.
  bool adjusted_cop = false;
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
