#include "analysis/optimisation/pareto_front.h"

#include "analysis/optimisation/known_programs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace {

using namespace corvath::analysis;

ParetoFront Front(const NonlinearProgram& program, Eigen::Index num_points) {
  FrontSettings settings;
  settings.num_points = num_points;
  const Screening screening =
      Screen(program, Eigen::MatrixXd(0, program.NumInputs()), settings.search);
  return FindFront(program, screening, settings);
}

TEST(ParetoFront, CoversThePublishedFronts) {
  for (const int number : {1, 2, 3}) {
    auto t0 = std::chrono::steady_clock::now();
    const ParetoFront front = Front(support::ZitzlerDebThiele(number), 101);
    constexpr Eigen::Index kDense = 20001;
    Eigen::MatrixXd exact(kDense, 2);
    for (Eigen::Index k = 0; k < kDense; ++k) {
      exact(k, 0) = static_cast<double>(k) / (kDense - 1);
      exact(k, 1) = support::ZitzlerDebThieleFront(number, exact(k, 0));
    }
    const Eigen::Vector2d reference(1.1, 1.1);
    const double whole = support::Hypervolume(exact, reference);
    double v = support::Hypervolume(front.objectives, reference);
    printf("%d: %zu points %ld searches %g of %g = %g  %g s\n", number, front.points.size(),
           (long)front.num_searches, v, whole, 1 - v / whole,
           std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count());
    EXPECT_GE(v, 0.99 * whole) << number;
    double largest = 0;
    for (Eigen::Index k = 0; k + 1 < front.objectives.rows(); ++k)
      largest = std::max(largest, (front.objectives.row(k + 1) - front.objectives.row(k)).norm());
    printf("gap %g\n", largest);
  }
}

}  // namespace
