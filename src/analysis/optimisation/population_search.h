#pragma once

#include "analysis/optimisation/nonlinear_program.h"

#include <Eigen/Core>

#include <functional>
#include <random>
#include <vector>

namespace corvath::analysis {

/// From rows of values of a program to one number each, the less the better; infinite where a value
/// is missing.
using MeritFunction = std::function<Eigen::VectorXd(const Eigen::MatrixXd& values)>;

struct PopulationSettings {
  Eigen::Index evaluations = 0;                ///< at most; runs begin until they are used up
  std::function<void(double share)> progress;  ///< what it throws ends the search
  /// Asked after each population; may be empty.
  std::function<bool(const Evaluated& best)> is_enough;
};

/// The best point of each of several populations by differential evolution: parameters that adapt by
/// success and an archive of replaced points, after R. Tanabe, A. Fukunaga, "Success-history based
/// parameter adaptation for differential evolution", IEEE Congress on Evolutionary Computation, 2013,
/// pp. 71-78. It sees the shape above the small minima that stop gradients. A population ends when
/// its merits no longer differ; the next one begins somewhere else.
/// @param first  points of the first population, with values; others are drawn
std::vector<Evaluated> SearchByPopulations(const NonlinearProgram& program,
                                           const MeritFunction& merit,
                                           const std::vector<Evaluated>& first,
                                           const PopulationSettings& settings,
                                           std::mt19937& random);

}  // namespace corvath::analysis
