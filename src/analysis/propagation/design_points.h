#pragma once

#include "analysis/progress.h"
#include "analysis/propagation/scatter.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace corvath::analysis {

/// A point of the limit surface that is nearest to the origin of standard normal space, at least
/// among its neighbours.
struct DesignPoint {
  Eigen::VectorXd u;  ///< D coordinates of the scatter
  /// Reliability index: distance of the origin from the limit surface; negative where the limit is
  /// violated at the origin itself.
  double beta = 0.0;
  /// D shares of the coordinates in beta^2, alpha_i^2 = (u_i / beta)^2: their importances.
  Eigen::VectorXd importances;

  /// Probability of a violation if the limit surface were a plane: Phi(-beta).
  double GetProbability() const;
};

/// First order reliability method (FORM): the design points of one limit by our SQP,
///
///     minimise u'u / 2  subject to  g(u) <= 0   (g(u) >= 0 where the origin violates the limit),
///
/// A. M. Hasofer, N. C. Lind, "Exact and invariant second-moment code format", Journal of the
/// Engineering Mechanics Division 100, 1974, pp. 111-121; R. Rackwitz, B. Fiessler, Computers and
/// Structures 9, 1978, pp. 489-494. The search starts at the origin, at `starts`, and where
/// directions of even spread meet a violation, so that several design points are found; nearest
/// first.
///
/// @param limit   the quantity g, a limit: violated where it is negative
/// @param starts  further starts, one row each (k x D): violating points of a sample, for example
/// @returns no points where no violation is found within kFarthest, or g has no value at the origin
/// @throws AnalysisError  a variable is discrete: the limit surface then has no nearest point that
///                        a gradient leads to
std::vector<DesignPoint> FindDesignPoints(const Scatter& scatter, Eigen::Index limit,
                                          const Eigen::MatrixXd& starts, std::uint32_t seed,
                                          const Progress& progress = {});

/// Coordinates beyond this occur once in 10^16.
constexpr double kFarthest = 8.2;

}  // namespace corvath::analysis
