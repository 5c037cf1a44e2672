#include "optimizer/collected_run.h"
#include "optimizer/small_problem.h"

#include <gtest/gtest.h>

#include <string>

using corvath::algorithm::optimizer::NLPQLPInterface;
using support::Gradients;
using support::SmallProblem;

namespace {

TEST(NLPQLP, SolvesPublishedProblems) {
  for (const support::CollectedProblem& problem : support::HockSchittkowski())
    for (const Gradients gradients : {Gradients::kAnalytic, Gradients::kCentral})
      for (const int num_parallel : {1, 6}) {
        // Problem 2 has a local minimum, which six points at once happen to lead to.
        if (num_parallel == 6 && problem.number == 2) continue;
        const support::CollectedRun run = support::RunCollected(problem, gradients, num_parallel);
        EXPECT_TRUE(support::IsSolved(problem, run))
            << "problem " << problem.number << ", " << num_parallel << " points: IFAIL "
            << run.ifail << ", f " << run.f << ", violation " << run.violation;
      }
}

TEST(NLPQLP, GivesMultipliersAndTakesAFirstMatrix) {
  SmallProblem plain;
  plain.core.MAXIT = 10;
  for (int run = 0; run < 4; ++run) {  // each counts its iterations anew
    plain.core.IFAIL = 0;
    plain.core.X.setZero();
    EXPECT_EQ(plain.Run(), 0);
  }
  // Projection of (1, 2) onto the line: (0.5, 1.5); gradient (-1, -1) = u (-1, -1).
  EXPECT_NEAR(plain.core.X(0, 0), 0.5, 1e-7);
  EXPECT_NEAR(plain.core.X(1, 0), 1.5, 1e-7);
  EXPECT_NEAR(plain.core.U(0), 1.0, 1e-6);
  SmallProblem exact;
  exact.core.MODE = 1;
  exact.core.C.topLeftCorner(2, 2) = 2.0 * Eigen::Matrix2d::Identity();
  int num_calls = 0;
  EXPECT_EQ(exact.Run([&](int calls) { num_calls = calls; }), 0);
  EXPECT_EQ(num_calls, 2);  // with the exact matrix one step and one gradient
  EXPECT_NEAR(exact.core.X(0, 0), 0.5, 1e-12);
}

TEST(NLPQLP, NeverConvergesOnAnswersThatAreNoNumbers) {
  // From the start or from a later call on, one of the client's answers is a NaN.
  const struct {
    const char* name;
    double& (*number)(NLPQLPInterface&);
  } answers[] = {
      {"F", [](NLPQLPInterface& core) -> double& { return core.F(0); }},
      {"G", [](NLPQLPInterface& core) -> double& { return core.G(0, 0); }},
      {"DF", [](NLPQLPInterface& core) -> double& { return core.DF(0); }},
      {"DG", [](NLPQLPInterface& core) -> double& { return core.DG(0, 1); }},
  };
  for (const auto& answer : answers)
    for (int spoiled = 0; spoiled < 6; ++spoiled) {
      SmallProblem problem;
      bool was_spoiled = false;
      const bool is_function = answer.name[0] != 'D';
      const std::int32_t ifail = problem.Run([&](int calls) {
        const bool was_asked = calls == 0 || is_function == (problem.core.IFAIL == -1);
        if (calls < spoiled || !was_asked) return;
        answer.number(problem.core) = std::nan("");
        was_spoiled = true;
      });
      SCOPED_TRACE(std::string(answer.name) + " from call " + std::to_string(spoiled));
      EXPECT_EQ(ifail > 0, was_spoiled) << ifail;
      EXPECT_TRUE(!was_spoiled || is_function || ifail == 10);  // the QP solver finds it
      EXPECT_TRUE(problem.core.X.col(0).head(2).allFinite());
    }
}

}  // namespace
