// Predictions of the sample project beside the finite element analysis, at designs that no model
// has seen.
//
//     compare_tenbar [zel_tenbar.vrdb]

#include "ten_bar_truss.h"
#include "truss_study.h"

#include <Eigen/Core>
#include <zelsolver/zelsolver.hpp>

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr unsigned int kNumDesigns = 500;
constexpr unsigned int kNumShown = 3;
constexpr double kMargin = 0.02;  // of the range: keeps the designs inside the trained ones

/// Designs at random: one row each, in^2. The same on every machine.
Eigen::MatrixXd RandomAreas() {
  std::mt19937 random(2026);
  const double width = sample_projects::kLargestArea - sample_projects::kSmallestArea;
  return Eigen::MatrixXd::NullaryExpr(kNumDesigns, sample_projects::kNumBars, [&] {
    const double share = (static_cast<double>(random()) + 0.5) / 4294967296.0;
    return sample_projects::kSmallestArea + width * (kMargin + (1.0 - 2.0 * kMargin) * share);
  });
}

/// Outputs of the analysis, in the order of the project: mass, displacement, stresses.
std::vector<double> Analyse(const Eigen::RowVectorXd& areas) {
  std::array<double, sample_projects::kNumBars> bars{};
  for (int i = 0; i < sample_projects::kNumBars; ++i) bars[static_cast<std::size_t>(i)] = areas(i);
  const auto truss = sample_projects::AnalyseTenBarTruss({bars});
  std::vector<double> outputs{truss.mass, truss.displacement};
  outputs.insert(outputs.end(), truss.stresses.begin(), truss.stresses.end());
  return outputs;
}

/// Prints the comparison of the project's models with the analysis.
void Compare(const zelsolver::Project& project) {
  const auto& names = project.GetOutputs();
  const std::size_t num_outputs = names.size();

  const Eigen::MatrixXd areas = RandomAreas();
  // Column-major, one row per design: just the layout that the library takes.
  const std::vector<double> out = project.Solve(areas);
  // Density, then errors, of each response; a family may have none.
  std::vector<std::vector<double>> trust(num_outputs);
  for (std::size_t k = 0; k < num_outputs; ++k) try {
      trust[k] =
          project.SolveResponse(names[k], areas, ZEL_RESPONSE_DENSITIES | ZEL_RESPONSE_ERRORS);
    } catch (const zelsolver::Error&) {
      trust[k].assign(5 * kNumDesigns, std::nan(""));
    }

  std::vector<std::vector<double>> analysed;
  for (unsigned int d = 0; d < kNumDesigns; ++d) analysed.push_back(Analyse(areas.row(d)));

  for (unsigned int d = 0; d < kNumShown; ++d) {
    std::printf("Design %u, areas in in^2:", d + 1);
    for (int i = 0; i < sample_projects::kNumBars; ++i) std::printf(" %.2f", areas(d, i));
    std::printf("\n  %-13s %12s %12s %12s %12s %10s\n", "response", "analysis", "predicted",
                "difference", "local RMSE", "density");
    for (std::size_t k = 0; k < num_outputs; ++k) {
      const double predicted = out[k * kNumDesigns + d];
      std::printf("  %-13s %12.4f %12.4f %12.4f %12.4f %10.4f\n", names[k].c_str(), analysed[d][k],
                  predicted, predicted - analysed[d][k], trust[k][kNumDesigns + 4 * d + 1],
                  trust[k][d]);
    }
  }

  std::printf("\nAll %u fresh designs\n  %-13s %12s %12s %14s\n", kNumDesigns, "response", "CoP",
              "1 - SSE/SST", "largest error");
  for (std::size_t k = 0; k < num_outputs; ++k) {
    double mean = 0.0;
    for (const auto& outputs : analysed) mean += outputs[k] / kNumDesigns;
    double total = 0.0;
    double squares = 0.0;
    double largest = 0.0;
    for (unsigned int d = 0; d < kNumDesigns; ++d) {
      const double error = out[k * kNumDesigns + d] - analysed[d][k];
      total += (analysed[d][k] - mean) * (analysed[d][k] - mean);
      squares += error * error;
      largest = std::fmax(largest, std::fabs(error));
    }
    std::printf("  %-13s %12.4f %12.4f %14.4f\n", names[k].c_str(),
                project.GetCoPs(names[k]).back(), 1.0 - squares / total, largest);
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Compare(zelsolver::Project(argc > 1 ? argv[1] : "zel_tenbar.vrdb"));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "compare_tenbar: %s\n", error.what());
    return 1;
  }
  return 0;
}
