#pragma once

#include "analysis/optimisation/global_search.h"

#include <Eigen/Core>

#include <vector>

namespace corvath::analysis {

struct FrontSettings {
  SearchSettings search;        ///< of the ends of the front
  Eigen::Index num_points = 0;  ///< wanted; 0: 101 for two objectives, about 100 for three
};

/// Points of which none is at least as good as another in all objectives and better in one; all keep
/// the limits.
struct ParetoFront {
  std::vector<Evaluated> points;  ///< by the first objective, ascending
  Eigen::MatrixXd objectives;     ///< as many rows, minimised
  LocalOptimum nearest;           ///< without points: the one with the least breach
  Eigen::Index num_searches = 0;
};

/// The Pareto front of two or three objectives: its ends by global searches, the points between them
/// by searches against the normal of the plane through the ends, from places on that plane (see
/// ReferenceForm). This is normal boundary intersection (I. Das, J. E. Dennis, SIAM Journal on
/// Optimization 8, 1998, pp. 631-657) with inequalities, so that each search has a solution, which
/// is Pareto-optimal also where the front is not convex; the places follow G. Eichfelder, "An
/// adaptive scalarization method in multiobjective optimization", ibid. 19, 2009, pp. 1694-1718: with
/// two objectives the widest gap is halved next, until the points are there or what is left are gaps of
/// the front itself. With three, the places are a lattice over all of the front's shadow.
///
/// Searches begin at the best known point for the place and at its neighbours. Points that another
/// one dominates are removed.
/// @throws std::logic_error  another number of objectives
ParetoFront FindFront(const NonlinearProgram& program, const Screening& screening,
                      const FrontSettings& settings);

/// Rows of `objectives` (minimised) that no other row dominates; of equal ones the first.
std::vector<Eigen::Index> NonDominated(const Eigen::MatrixXd& objectives);

}  // namespace corvath::analysis
