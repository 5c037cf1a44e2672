#include "analysis/optimisation/pareto_front.h"

#include "literature/known_programs.h"
#include "support/testing.h"

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
  constexpr Eigen::Index kDense = 20001;
  const Eigen::Vector2d reference(1.1, 1.1);
  for (const int number : {1, 2, 3}) {
    const ParetoFront front = Front(literature::ZitzlerDebThiele(number), 0);
    Eigen::MatrixXd exact(kDense, 2);
    for (Eigen::Index k = 0; k < kDense; ++k) {
      exact(k, 0) = static_cast<double>(k) / (kDense - 1);
      exact(k, 1) = literature::ZitzlerDebThieleFront(number, exact(k, 0));
    }
    EXPECT_LE(front.points.size(), 105U) << number;
    EXPECT_GE(literature::Hypervolume(front.objectives, reference),
              0.99 * literature::Hypervolume(exact, reference))
        << number;
  }
}

TEST(ParetoFront, HasAnEndWhereTheOtherObjectiveIsBest) {
  // (x, max(0.5 - x, 0)^2): all x from 0.5 on have the least second value, 0.5 the least first one.
  const auto flat = literature::MakeProgram(Eigen::Vector2d::Zero(), Eigen::Vector2d::Ones(),
                                            {1, 1}, 0, [](const Eigen::RowVectorXd& x) {
                                              const double below = std::max(0.5 - x(0), 0.0);
                                              return Eigen::RowVector2d(x(0), below * below);
                                            });
  const ParetoFront front = Front(flat, 2);
  EXPECT_TRUE(((front.objectives.col(0).array() - 0.5).abs() < 0.01 &&
               front.objectives.col(1).array() < 1e-4)
                  .any())
      << front.objectives;
  EXPECT_LT(front.objectives.col(0).maxCoeff(), 0.51) << front.objectives;
}

TEST(ParetoFront, SpreadsOverASphereAndKeepsItsLimit) {
  const auto sphere =
      literature::MakeProgram(Eigen::Vector3d::Zero(), Eigen::Vector3d::Constant(1.2), {1, 1, 1}, 1,
                              [](const Eigen::RowVectorXd& x) {
                                Eigen::RowVectorXd row(4);
                                row << x, x.norm() - 1.0;
                                return row;
                              });
  const ParetoFront front = Front(sphere, 150);
  EXPECT_LE((front.objectives.rowwise().norm().array() - 1.0).abs().maxCoeff(), 1e-6);
  for (const auto& point : front.points) EXPECT_GE(point.columns(3), 0.0);
  // Beside a lattice of 105 directions, which is as even as one could ask for.
  Eigen::MatrixXd lattice(0, 3);
  for (int i = 0; i <= 13; ++i)
    for (int j = 0; i + j <= 13; ++j) {
      lattice.conservativeResize(lattice.rows() + 1, Eigen::NoChange);
      lattice.bottomRows(1) = Eigen::RowVector3d(i, j, 13 - i - j).normalized();
    }
  const Eigen::Vector3d reference = Eigen::Vector3d::Constant(1.2);
  EXPECT_LE(front.points.size(), 120U);
  EXPECT_GE(literature::Hypervolume(front.objectives, reference),
            0.99 * literature::Hypervolume(lattice, reference));
}

}  // namespace
