#pragma once

#include "analysis/interval.h"
#include "analysis/progress.h"
#include "analysis/propagation/design_points.h"
#include "analysis/propagation/importance_sampling.h"
#include "analysis/propagation/scatter.h"

#include <Eigen/Core>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace corvath::analysis {

enum class SampleScheme { kLatinHypercube, kSobol, kMonteCarlo };

struct PropagationSettings {
  SampleScheme scheme = SampleScheme::kLatinHypercube;
  Eigen::Index num_designs = 10000;
  /// Wanted half width of intervals: of means and standard deviations over the larger of magnitude
  /// and standard deviation, of the limits' probabilities over themselves. The sample is doubled
  /// until it is reached or `most` exceeded. 0: the sample as it is, and 0.1 for importance
  /// sampling.
  double until = 0.0;
  Eigen::Index most = 1 << 20;
  std::vector<double> quantiles = {0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99};
  double confidence = 0.95;
  bool with_errors = false;  ///< the errors of the models scatter, too
  bool with_form = true;     ///< design points and importance sampling of each limit
  std::uint32_t seed = 1;
};

/// How one quantity scatters.
struct QuantityScatter {
  std::wstring name;
  Interval mean;
  Interval deviation;
  Interval variation;
  double smallest = 0.0;
  double largest = 0.0;
  std::vector<Interval> quantiles;  ///< as asked for
  Eigen::Index num_failed = 0;      ///< designs left out, since the value is not finite
};

/// How likely one limit is violated.
struct LimitRisk {
  enum class Method { kSampling, kImportanceSampling };

  std::wstring name;
  /// The narrower of the estimates by sampling and by importance sampling; that by sampling where
  /// it has far more violations than the other.
  Interval probability;
  Method method = Method::kSampling;
  Interval sampling;
  Eigen::Index num_violations = 0;         ///< in the sample
  Eigen::Index num_failed = 0;             ///< designs without a value
  std::optional<Interval> without_errors;  ///< by sampling, where the errors of models scatter
  bool is_searched = false;                ///< for design points
  std::vector<DesignPoint> design_points;  ///< nearest first; none: not looked for, or not found
  Eigen::MatrixXd design_inputs;           ///< their inputs, one row each
  std::optional<ImportanceSample> importance;
  std::vector<std::wstring> warnings;
};

struct Propagation {
  Eigen::Index num_designs = 0;
  std::vector<double> quantiles;
  std::vector<QuantityScatter> quantities;
  Eigen::MatrixXd correlations;  ///< q x q; NaN of a quantity that does not vary
  Eigen::MatrixXd correlations_low;
  Eigen::MatrixXd correlations_high;
  std::vector<LimitRisk> limits;
  std::vector<std::wstring> coordinates;  ///< names of what scatters, as in DesignPoint
  std::vector<std::wstring> notes;
};

/// Sends random inputs through the models of a study: statistics of all quantities from a sample,
/// and for each limit the probability that it is violated, besides by design points and importance
/// sampling around them, for probabilities that a sample does not see.
/// @throws AnalysisError      settings out of range, or more values than can be held
/// @throws AnalysisCancelled  `progress` said so
Propagation Propagate(const StudyModel& model, const InputSpace& space,
                      const PropagationSettings& settings, const Progress& progress = {});

}  // namespace corvath::analysis
