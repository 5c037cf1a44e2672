#pragma once

#include "analysis/input_space.h"
#include "analysis/progress.h"
#include "analysis/study_model.h"

#include <Eigen/Core>

#include <cstdint>
#include <string>
#include <vector>

namespace corvath::analysis {

struct SensitivitySettings {
  Eigen::Index num_base = 4096;  ///< n: rows of each of the two base samples; a power of 2 is best
  bool second_order = false;
  std::uint32_t seed = 1;
  Eigen::Index num_resamples = 1000;  ///< of the bootstrap
  double confidence = 0.95;           ///< of the intervals
};

/// Estimates with the ends of their confidence intervals; NaN where there is nothing to estimate.
struct Estimates {
  Eigen::VectorXd value;
  Eigen::VectorXd low;
  Eigen::VectorXd high;
};

/// What matters for one quantity.
struct QuantitySensitivity {
  std::wstring name;
  double mean = 0.0;
  double variance = 0.0;
  Estimates first;   ///< of each group: share of the variance that it explains by itself
  Estimates total;   ///< of each group: share that is left when only it varies
  Estimates second;  ///< of each pair of groups (0 1, 0 2, ..., 1 2, ...): of their interaction
  double cop = 0.0;  ///< of a response's model, NaN: unknown; 1 - CoP is not told by the indices
  Eigen::Index num_failed = 0;  ///< rows left out, since a value of theirs is not finite
  bool is_constant = false;     ///< no variance to explain: the indices are NaN
};

struct Sensitivity {
  /// What varies together: input names. Independent inputs are groups of their own.
  std::vector<std::vector<std::wstring>> groups;
  std::vector<QuantitySensitivity> quantities;
  Eigen::Index num_evaluations = 0;  ///< designs at which the models were asked
};

/// Sobol' indices of all quantities of a study, from two base samples A and B of n scrambled Sobol
/// points and, for each group i of inputs, A with the columns of the group taken from B:
///
///     first order   S_i = mean(f(B) (f(AB_i) - f(A))) / V
///     total order   T_i = mean((f(A) - f(AB_i))^2) / (2 V)
///
/// A. Saltelli et al., "Variance based sensitivity analysis of model output", Computer Physics
/// Communications 181, 2010, pp. 259-270, table 2 (b), (f), the latter after M. J. W. Jansen, ibid.
/// 117, 1999, pp. 35-43. Second order, with BA_i besides: V_ij = mean(f(BA_i) f(AB_j)) - mean(f(A)
/// f(B)), S_ij = V_ij / V - S_i - S_j, after A. Saltelli, ibid. 145, 2002, pp. 280-297. All on
/// values from which their mean is taken, since the products cancel otherwise.
///
/// Correlated inputs are no single causes of variance: they vary as one group (J. Jacques et al.,
/// Reliability Engineering and System Safety 91, 2006, pp. 1126-1134). Intervals are percentiles of
/// a bootstrap over the rows; since Sobol points are more even than independent ones, they are
/// rather too wide.
///
/// Takes n (2 + g) evaluations for g groups, n (2 + 2 g) with second order.
/// @throws AnalysisError      settings out of range, or more values than can be held
/// @throws AnalysisCancelled  `progress` said so
Sensitivity AnalyseSensitivity(const StudyModel& model, const InputSpace& space,
                               const SensitivitySettings& settings, const Progress& progress = {});

}  // namespace corvath::analysis
