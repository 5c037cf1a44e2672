#pragma once

#include "analysis/interval.h"
#include "analysis/progress.h"
#include "analysis/propagation/design_points.h"

#include <cstdint>
#include <vector>

namespace corvath::analysis {

struct ImportanceSettings {
  double precision = 0.1;       ///< wanted half width of the interval over the probability
  Eigen::Index most = 1 << 17;  ///< points
  double confidence = 0.95;
  std::uint32_t seed = 1;
};

struct ImportanceSample {
  Interval probability;
  Eigen::Index num_points = 0;
  Eigen::Index num_violations = 0;
  Eigen::Index num_failed = 0;  ///< points without a value; they count as no violation
};

/// Probability that a limit is violated, by sampling around its design points: normal points about
/// each, weighted by its probability, mixed with a tenth about the origin, so that no weight
/// exceeds 10 and a region without design point is not lost.
///
/// M. Hohenbichler, R. Rackwitz, "Improvement of second-order reliability estimates by importance
/// sampling", Journal of Engineering Mechanics 114, 1988, pp. 2195-2199; the mixture after T.
/// Hesterberg, "Weighted average importance sampling and defensive mixture distributions",
/// Technometrics 37, 1995, pp. 185-194.
/// @param points  at least one
/// @throws AnalysisCancelled
ImportanceSample SampleAround(const Scatter& scatter, Eigen::Index limit,
                              const std::vector<DesignPoint>& points,
                              const ImportanceSettings& settings, const Progress& progress);

}  // namespace corvath::analysis
