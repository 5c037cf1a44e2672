#pragma once

#include "optimizer/optimizer_nlpqlp.h"

#include <Eigen/Core>

#include <cstdint>
#include <functional>
#include <string>

namespace sample_projects {

constexpr double kLargestStress = 25.0;       ///< ksi, in tension and in compression
constexpr double kLargestDisplacement = 2.0;  ///< in

/// Responses of designs of the truss: from n x 10 areas (in^2) to n x 12 values, the mass, the
/// displacement and the ten stresses, in the order of the sample project's outputs.
using TrussResponses = std::function<Eigen::MatrixXd(const Eigen::MatrixXd& areas)>;

/// Bounds of the areas, in^2, one of each bar.
struct AreaBounds {
  Eigen::VectorXd lower, upper;
};

/// A design on the way to the least mass.
struct TrussIterate {
  std::uint64_t num_designs;     ///< evaluated so far
  Eigen::RowVectorXd areas;      ///< in^2
  Eigen::RowVectorXd responses;  ///< 12
  double violation;              ///< largest excess over a limit, as a share of it; 0: none
  std::string most_used;  ///< the response that comes closest to its limit, or exceeds it most
};

/// The truss of least mass whose stresses and displacement keep their limits, the areas between
/// bounds: a run of the SQP optimiser through its loop of designs, from areas of
/// 12 in^2, with central differences.
///
/// @param optimizer   any state; finalized on return, tells whether it converged
/// @param on_iterate  called with the start and with each accepted design
/// @return the last of them
TrussIterate MinimiseMass(corvath::algorithm::optimizer::OptimizerNLPQLP<double>& optimizer,
                          const AreaBounds& bounds, const TrussResponses& respond,
                          const std::function<void(const TrussIterate&)>& on_iterate);

/// Linear finite element analysis of each design.
Eigen::MatrixXd AnalyseDesigns(const Eigen::MatrixXd& areas);

/// Largest excess over a limit as a share of it (negative: none comes that close), and whose.
std::pair<double, std::string> LargestExcess(const Eigen::RowVectorXd& responses);

}  // namespace sample_projects
