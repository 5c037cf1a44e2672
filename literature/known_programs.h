#pragma once

#include "analysis/optimisation/nonlinear_program.h"

#include <Eigen/Core>

#include <functional>
#include <string>
#include <vector>

namespace literature {

/// A problem of the literature with its published optimum.
struct KnownProgram {
  std::string name;
  corvath::analysis::NonlinearProgram program;
  double optimum;
  double tolerance;  ///< half a unit of the last published figure
};

/// One point to its row of values.
using RowFunction = std::function<Eigen::RowVectorXd(const Eigen::RowVectorXd& x)>;

/// A program of plain functions.
corvath::analysis::NonlinearProgram MakeProgram(const Eigen::VectorXd& lower,
                                                const Eigen::VectorXd& upper,
                                                std::vector<Eigen::Index> num_terms,
                                                Eigen::Index num_limits, RowFunction function);

/// Welded beam, spring, pressure vessel with plates of whole sixteenths, ten-bar truss.
std::vector<KnownProgram> EngineeringPrograms();

/// Functions with many minima, one of them with limits.
std::vector<KnownProgram> MultimodalPrograms();

/// Number 1, 2 or 3 of E. Zitzler, K. Deb, L. Thiele, "Comparison of multiobjective evolutionary
/// algorithms: empirical results", Evolutionary Computation 8, 2000, pp. 173-195, in 30 inputs.
corvath::analysis::NonlinearProgram ZitzlerDebThiele(int number);
/// Its Pareto front: f2 over f1, 0 <= f1 <= 1; for number 3 with parts that are dominated.
double ZitzlerDebThieleFront(int number, double f1);

/// Area (two columns) or volume (three) between the rows that are below `reference` and it.
double Hypervolume(Eigen::MatrixXd points, const Eigen::VectorXd& reference);

}  // namespace literature
