#include "optimizer/collected_run.h"
#include "optimizer/known_shortfalls.h"
#include "optimizer/small_problem.h"

#include <gtest/gtest.h>

#include <string>

using corvath::algorithm::optimizer::NLPQLPInterface;
using support::CollectedProblem;
using support::CollectedRun;
using support::Gradients;
using support::SmallProblem;

namespace {

TEST(NLPQLP, SolvesThePublishedCollection) {
  ASSERT_EQ(support::HockSchittkowski().size(), 82u);
  for (const Gradients gradients : {Gradients::kAnalytic, Gradients::kCentral}) {
    int num_solved = 0;
    for (const CollectedProblem& problem : support::HockSchittkowski()) {
      const CollectedRun run = support::RunCollected(problem, gradients);
      SCOPED_TRACE("problem " + std::to_string(problem.number) + ": f " + std::to_string(run.f) +
                   ", violation " + std::to_string(run.violation));
      EXPECT_EQ(run.ifail, 0);
      const bool solved = support::IsSolved(problem, run);
      num_solved += solved;
      const support::KnownShortfall* const known = support::FindShortfall(problem.number);
      if (known == nullptr) {
        EXPECT_TRUE(solved);
      } else {
        EXPECT_FALSE(solved) << "no longer a shortfall";
        EXPECT_NEAR(run.f, known->f, known->accuracy * std::max(1.0, std::abs(known->f)));
        EXPECT_LE(run.violation, known->violation);
        const CollectedRun strict = support::RunCollected(problem, gradients, 1, 1e-14);
        EXPECT_EQ(support::IsSolved(problem, strict), known->stops_early);
      }
    }
    EXPECT_EQ(num_solved, 71);
  }
}

TEST(NLPQLP, SearchesAtSeveralPointsAtOnce) {
  for (const CollectedProblem& problem : support::HockSchittkowski()) {
    if (problem.number != 1 && problem.number != 43 && problem.number != 100) continue;
    const CollectedRun run = support::RunCollected(problem, Gradients::kAnalytic, 6);
    EXPECT_TRUE(support::IsSolved(problem, run)) << problem.number << ": IFAIL " << run.ifail;
  }
}

TEST(NLPQLP, GivesMultipliersAndTakesAFirstMatrix) {
  SmallProblem plain;
  EXPECT_EQ(plain.Run(), 0);
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
  const double nan = std::nan("");
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
      const std::int32_t ifail = problem.Run([&](int calls) {
        const bool is_function = answer.name[0] != 'D';
        const bool was_asked = calls == 0 || is_function == (problem.core.IFAIL == -1);
        if (calls < spoiled || !was_asked) return;
        answer.number(problem.core) = nan;
        was_spoiled = true;
      });
      SCOPED_TRACE(std::string(answer.name) + " from call " + std::to_string(spoiled));
      EXPECT_EQ(ifail > 0, was_spoiled) << ifail;
      if (was_spoiled && answer.name[0] == 'D') {
        EXPECT_EQ(ifail, 10);  // the QP solver finds it
      }
      EXPECT_TRUE(problem.core.X.col(0).head(2).allFinite());
    }
}

}  // namespace
