// Predictions of the sample project beside the finite element analysis, at designs that no model
// has seen.
//
//     compare_tenbar [zel_tenbar.vrdb]

#include "library_calls.h"
#include "ten_bar_truss.h"
#include "truss_study.h"

#include <Eigen/Core>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

using examples::Check;

constexpr unsigned int kNumDesigns = 500;
constexpr unsigned int kNumShown = 3;
constexpr double kMargin = 0.02;  // of the range: keeps the designs inside the trained ones

/// Designs at random: one row each, in^2. The same on every machine.
Eigen::MatrixXd RandomAreas() {
  std::mt19937 random(2026);
  const double width = examples::kLargestArea - examples::kSmallestArea;
  return Eigen::MatrixXd::NullaryExpr(kNumDesigns, examples::kNumBars, [&] {
    const double share = (static_cast<double>(random()) + 0.5) / 4294967296.0;
    return examples::kSmallestArea + width * (kMargin + (1.0 - 2.0 * kMargin) * share);
  });
}

/// Outputs of the analysis, in the order of the project: mass, displacement, stresses.
std::vector<double> Analyse(const Eigen::RowVectorXd& areas) {
  std::array<double, examples::kNumBars> bars{};
  for (int i = 0; i < examples::kNumBars; ++i) bars[static_cast<std::size_t>(i)] = areas(i);
  const auto truss = examples::AnalyseTenBarTruss({bars});
  std::vector<double> outputs{truss.mass, truss.displacement};
  outputs.insert(outputs.end(), truss.stresses.begin(), truss.stresses.end());
  return outputs;
}

}  // namespace

int main(int argc, char** argv) {
  const char* const path = argc > 1 ? argv[1] : nullptr;  // null: zel_tenbar.vrdb in this folder
  const auto names = examples::OutputNames(path);
  const std::size_t num_outputs = names.size();

  const Eigen::MatrixXd areas = RandomAreas();
  // Column-major, one row per design: just the layout that the library takes.
  const auto num_values = static_cast<unsigned int>(areas.size());
  std::vector<double> out(num_outputs * kNumDesigns);
  Check(dzel2_solve(path, kNumDesigns, areas.data(), num_values, ZEL_SOLVE_RESPONSES, out.data(),
                    static_cast<unsigned int>(out.size())));
  // Density, then errors, of each response; a family may have none.
  std::vector<std::vector<double>> trust(num_outputs);
  for (std::size_t k = 0; k < num_outputs; ++k) {
    trust[k].resize(5 * kNumDesigns);
    if (dzel2_get_per_response(path, kNumDesigns, areas.data(), num_values, names[k].c_str(),
                               ZEL_RESPONSE_DENSITIES | ZEL_RESPONSE_ERRORS, trust[k].data(),
                               5 * kNumDesigns) != ZEL_OK)
      trust[k].assign(5 * kNumDesigns, std::nan(""));
  }

  std::vector<std::vector<double>> analysed;
  for (unsigned int d = 0; d < kNumDesigns; ++d) analysed.push_back(Analyse(areas.row(d)));

  for (unsigned int d = 0; d < kNumShown; ++d) {
    std::printf("Design %u, areas in in^2:", d + 1);
    for (int i = 0; i < examples::kNumBars; ++i) std::printf(" %.2f", areas(d, i));
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
    std::vector<double> cops(examples::kNumBars + 1);
    Check(dzel2_getCoPValuesPerResponse(path, names[k].c_str(), cops.data()));
    std::printf("  %-13s %12.4f %12.4f %14.4f\n", names[k].c_str(), cops.back(),
                1.0 - squares / total, largest);
  }
  dzel2_cleanup();
  return 0;
}
