// Least mass of the ten-bar truss within the limits of stress and displacement, found on the models
// of the sample project, and checked with the finite element analysis.
//
//     optimise_tenbar [zel_tenbar.vrdb]

#include "ten_bar_truss.h"
#include "truss_optimum.h"

#include <zelsolver/zelsolver.hpp>

#include <cmath>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

using corvath::algorithm::optimizer::OptimizerNLPQLP;
using sample_projects::TrussIterate;

/// Where the project's models were trained: beyond, they refuse to predict.
sample_projects::AreaBounds InputBounds(const zelsolver::Project& project) {
  sample_projects::AreaBounds areas{Eigen::VectorXd(sample_projects::kNumBars),
                                    Eigen::VectorXd(sample_projects::kNumBars)};
  const std::vector<zelsolver::Bounds> bounds = project.GetBounds();
  for (Eigen::Index i = 0; i < sample_projects::kNumBars; ++i) {
    areas.lower(i) = bounds.at(static_cast<std::size_t>(i)).lower;
    areas.upper(i) = bounds.at(static_cast<std::size_t>(i)).upper;
  }
  return areas;
}

/// All outputs of the project's models at each design.
Eigen::MatrixXd Predict(const zelsolver::Project& project, const Eigen::MatrixXd& areas) {
  Eigen::MatrixXd responses(areas.rows(), static_cast<Eigen::Index>(project.GetOutputs().size()));
  project.Solve(areas, ZEL_SOLVE_RESPONSES, responses);
  return responses;
}

void PrintAreas(const char* title, const Eigen::RowVectorXd& areas) {
  std::printf("  %-13s", title);
  for (Eigen::Index i = 0; i < areas.size(); ++i) std::printf(" %6.2f", areas(i));
  std::printf("\n");
}

/// @return the program's status
int Optimise(const zelsolver::Project& project) {
  const std::vector<std::string>& names = project.GetOutputs();
  const sample_projects::AreaBounds bounds = InputBounds(project);

  std::printf(
      "Least mass: stresses within %g ksi, displacement within %g in, areas %.2f to %.2f in^2\n\n",
      sample_projects::kLargestStress, sample_projects::kLargestDisplacement,
      bounds.lower.minCoeff(), bounds.upper.maxCoeff());
  std::printf("  %9s %8s %10s %18s  %s\n", "iteration", "designs", "mass, lb", "largest violation",
              "closest to its limit");
  int iteration = 0;
  OptimizerNLPQLP<double> optimizer;
  const TrussIterate optimum = sample_projects::MinimiseMass(
      optimizer, bounds, [&](const Eigen::MatrixXd& areas) { return Predict(project, areas); },
      [&](const TrussIterate& iterate) {
        std::printf("  %9d %8llu %10.3f %16.4f %%  %s\n", iteration++,
                    static_cast<unsigned long long>(iterate.num_designs), iterate.responses(0),
                    100.0 * iterate.violation, iterate.most_used.c_str());
      });
  if (!optimizer.IsConverged()) {
    std::fprintf(stderr, "optimise_tenbar: the optimiser did not converge (%d).\n",
                 optimizer.GetFailure());
    return 1;
  }

  const Eigen::RowVectorXd analysed = sample_projects::AnalyseDesigns(optimum.areas);
  std::printf("\nThe optimum on the models, checked with the analysis\n  %-13s %10s %10s %10s\n",
              "response", "predicted", "analysis", "limit");
  for (std::size_t k = 0; k < names.size(); ++k) {
    const auto column = static_cast<Eigen::Index>(k);
    std::printf("  %-13s %10.3f %10.3f", names[k].c_str(), optimum.responses(column),
                analysed(column));
    if (k > 0)
      std::printf(" %10g",
                  k == 1 ? sample_projects::kLargestDisplacement : sample_projects::kLargestStress);
    std::printf("\n");
  }

  OptimizerNLPQLP<double> reference;
  const TrussIterate exact = sample_projects::MinimiseMass(
      reference, bounds, sample_projects::AnalyseDesigns, [](const TrussIterate&) {});
  const auto [excess, name] = sample_projects::LargestExcess(analysed);
  std::printf(
      "  By the analysis %s is the closest to its limit: %.2f %% %s it.\n\n"
      "The same optimisation on the analysis itself: mass %.3f lb after %llu analyses\n",
      name.c_str(), 100.0 * std::abs(excess), excess > 0.0 ? "above" : "below", exact.responses(0),
      static_cast<unsigned long long>(exact.num_designs));
  std::printf("  areas, in^2  ");
  for (int i = 1; i <= sample_projects::kNumBars; ++i) std::printf(" %6d", i);
  std::printf("\n");
  PrintAreas("on the models", optimum.areas);
  PrintAreas("on analyses", exact.areas);
  return reference.IsConverged() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Optimise(zelsolver::Project(argc > 1 ? argv[1] : "zel_tenbar.vrdb"));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "optimise_tenbar: %s\n", error.what());
    return 1;
  }
}
