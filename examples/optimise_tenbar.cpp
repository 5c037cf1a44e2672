// Least mass of the ten-bar truss within the limits of stress and displacement, found on the models
// of the sample project, and checked with the finite element analysis.
//
//     optimise_tenbar [zel_tenbar.vrdb]

#include "library_calls.h"
#include "ten_bar_truss.h"
#include "truss_optimum.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using corvath::algorithm::optimizer::OptimizerNLPQLP;
using examples::Check;
using examples::TrussIterate;

/// Where the project's models were trained: beyond, they refuse to predict.
examples::AreaBounds InputBounds(const char* path) {
  Eigen::Matrix<double, 2, Eigen::Dynamic> bounds(2, examples::kNumBars);
  Check(dzel2_getInputBounds(path, bounds.data()));
  return {bounds.row(0), bounds.row(1)};
}

/// All outputs of the project's models at each design.
Eigen::MatrixXd Predict(const char* path, std::size_t num_outputs, const Eigen::MatrixXd& areas) {
  Eigen::MatrixXd responses(areas.rows(), static_cast<Eigen::Index>(num_outputs));
  if (areas.rows() > 0)
    Check(dzel2_solve(path, static_cast<unsigned int>(areas.rows()), areas.data(),
                      static_cast<unsigned int>(areas.size()), ZEL_SOLVE_RESPONSES,
                      responses.data(), static_cast<unsigned int>(responses.size())));
  return responses;
}

void PrintAreas(const char* title, const Eigen::RowVectorXd& areas) {
  std::printf("  %-13s", title);
  for (Eigen::Index i = 0; i < areas.size(); ++i) std::printf(" %6.2f", areas(i));
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  const char* const path = argc > 1 ? argv[1] : nullptr;  // null: zel_tenbar.vrdb in this folder
  const std::vector<std::string> names = examples::OutputNames(path);
  const examples::AreaBounds bounds = InputBounds(path);

  std::printf(
      "Least mass: stresses within %g ksi, displacement within %g in, areas %.2f to %.2f in^2\n\n",
      examples::kLargestStress, examples::kLargestDisplacement, bounds.lower.minCoeff(),
      bounds.upper.maxCoeff());
  std::printf("  %9s %8s %10s %18s  %s\n", "iteration", "designs", "mass, lb", "largest violation",
              "closest to its limit");
  int iteration = 0;
  OptimizerNLPQLP<double> optimizer;
  const TrussIterate optimum = examples::MinimiseMass(
      optimizer, bounds,
      [&](const Eigen::MatrixXd& areas) { return Predict(path, names.size(), areas); },
      [&](const TrussIterate& iterate) {
        std::printf("  %9d %8llu %10.3f %16.4f %%  %s\n", iteration++,
                    static_cast<unsigned long long>(iterate.num_designs), iterate.responses(0),
                    100.0 * iterate.violation, iterate.most_used.c_str());
      });
  dzel2_cleanup();
  if (!optimizer.IsConverged()) {
    std::fprintf(stderr, "optimise_tenbar: the optimiser did not converge (%d).\n",
                 optimizer.GetFailure());
    return 1;
  }

  const Eigen::RowVectorXd analysed = examples::AnalyseDesigns(optimum.areas);
  std::printf("\nThe optimum on the models, checked with the analysis\n  %-13s %10s %10s %10s\n",
              "response", "predicted", "analysis", "limit");
  for (std::size_t k = 0; k < names.size(); ++k) {
    const auto column = static_cast<Eigen::Index>(k);
    std::printf("  %-13s %10.3f %10.3f", names[k].c_str(), optimum.responses(column),
                analysed(column));
    if (k > 0)
      std::printf(" %10g", k == 1 ? examples::kLargestDisplacement : examples::kLargestStress);
    std::printf("\n");
  }

  OptimizerNLPQLP<double> reference;
  const TrussIterate exact = examples::MinimiseMass(reference, bounds, examples::AnalyseDesigns,
                                                    [](const TrussIterate&) {});
  const auto [excess, name] = examples::LargestExcess(analysed);
  std::printf(
      "  By the analysis %s is the closest to its limit: %.2f %% %s it.\n\n"
      "The same optimisation on the analysis itself: mass %.3f lb after %llu analyses\n",
      name.c_str(), 100.0 * std::abs(excess), excess > 0.0 ? "above" : "below", exact.responses(0),
      static_cast<unsigned long long>(exact.num_designs));
  std::printf("  areas, in^2  ");
  for (int i = 1; i <= examples::kNumBars; ++i) std::printf(" %6d", i);
  std::printf("\n");
  PrintAreas("on the models", optimum.areas);
  PrintAreas("on analyses", exact.areas);
  return reference.IsConverged() ? 0 : 1;
}
