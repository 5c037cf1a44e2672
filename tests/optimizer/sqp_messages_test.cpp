#include "optimizer/small_problem.h"
#include "optimizer/sqp_core.h"

#include <gtest/gtest.h>

#include <string>

using corvath::algorithm::optimizer::NLPQLP;
using corvath::algorithm::optimizer::NLPQLPInterface;
using corvath::algorithm::optimizer::QpSolve;
using support::SmallProblem;

namespace {

/// What `action` writes to the standard output.
template <class Action>
std::string Output(Action&& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

std::string FirstLine(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

TEST(NLPQLP, RefusesWrongArgumentsAndNamesThem) {
  struct Case {
    void (*change)(NLPQLPInterface&);
    std::int32_t ifail;
    const char* text;
  };
  // WA needs 10 numbers, the stack of 10, 2 (M + 2N) + (N + M) + (N + 1) + N + (3N + 2M) + 3 (N + 1)
  // + 2N + M, and the QP solver's M + 3 NMAX^2 / 2 + 10 NMAX + 1 + MMAX: 106 for N = 2, M = 1.
  const Case cases[] = {
      {[](NLPQLPInterface& c) { c.L = 0; }, 6, " *** ERROR 6: Wrong input parameter L: 0"},
      {[](NLPQLPInterface& c) { c.N = 0; }, 6, " *** ERROR 6: Wrong input parameter N: 0"},
      {[](NLPQLPInterface& c) { c.NMAX = 2; }, 6, " *** ERROR 6: Wrong input parameter N: 2"},
      {[](NLPQLPInterface& c) { c.M = -1; }, 6, " *** ERROR 6: Wrong input parameter M: -1"},
      {[](NLPQLPInterface& c) { c.M = 2; }, 6, " *** ERROR 6: Wrong input parameter M: 2"},
      {[](NLPQLPInterface& c) { c.ME = -1; }, 6, " *** ERROR 6: Wrong input parameter ME: -1"},
      {[](NLPQLPInterface& c) { c.ME = 2; }, 6, " *** ERROR 6: Wrong input parameter ME: 2"},
      {[](NLPQLPInterface& c) { c.MNN2 = 6; }, 6, " *** ERROR 6: Wrong input parameter MNN2: 6"},
      {[](NLPQLPInterface& c) { c.IPRINT = 5; }, 9,
       " *** ERROR 9: Wrong input parameter IPRINT: 5"},
      {[](NLPQLPInterface& c) { c.IPRINT = -1; }, 9, ""},
      {[](NLPQLPInterface& c) { c.MODE = 2; }, 9, " *** ERROR 9: Wrong input parameter MODE: 2"},
      {[](NLPQLPInterface& c) { c.MODE = -1; }, 9, " *** ERROR 9: Wrong input parameter MODE: -1"},
      {[](NLPQLPInterface& c) { c.MAX_NM = 51; }, 9,
       " *** ERROR 9: Wrong input parameter MAX_NM: 51"},
      {[](NLPQLPInterface& c) { c.MAX_NM = -1; }, 9,
       " *** ERROR 9: Wrong input parameter MAX_NM: -1"},
      {[](NLPQLPInterface& c) { c.MAXFUN = 51; }, 9,
       " *** ERROR 9: Wrong input parameter MAXFUN: 51"},
      {[](NLPQLPInterface& c) { c.MAXFUN = -1; }, 9,
       " *** ERROR 9: Wrong input parameter MAXFUN: -1"},
      {[](NLPQLPInterface& c) { c.MAXIT = -1; }, 9,
       " *** ERROR 9: Wrong input parameter MAXIT: -1"},
      {[](NLPQLPInterface& c) { c.IOUT = 0; }, 9, " *** ERROR 9: Wrong input parameter IOUT: 0"},
      {[](NLPQLPInterface& c) { c.IFAIL = -3; }, 9,
       " *** ERROR 9: Wrong input parameter IFAIL: -3"},
      {[](NLPQLPInterface& c) { c.IFAIL = 1; }, 9, " *** ERROR 9: Wrong input parameter IFAIL: 1"},
      {[](NLPQLPInterface& c) { c.STPMIN = -0.5; }, 9,
       " *** ERROR 9: Wrong input parameter STPMIN: -0.5"},
      {[](NLPQLPInterface& c) { c.TOL_NM = -1.0; }, 9,
       " *** ERROR 9: Wrong input parameter TOL_NM: -1"},
      {[](NLPQLPInterface& c) { c.ACCQP = std::nan(""); }, 9,
       " *** ERROR 9: Wrong input parameter ACCQP: nan"},
      {[](NLPQLPInterface& c) { c.ACC = 0.0; }, 9, " *** ERROR 9: Wrong input parameter ACC: 0"},
      {[](NLPQLPInterface& c) { c.WA.resize(105); }, 5,
       " *** ERROR 5: Length of WA too short, should be at least 106"},
      {[](NLPQLPInterface& c) { c.KWA.resize(9); }, 5,
       " *** ERROR 5: Length of KWA too short, should be at least 10"},
      {[](NLPQLPInterface& c) { c.ACTIVE.resize(11); }, 5,
       " *** ERROR 5: Length of ACTIVE too short, should be at least 12"},
      {[](NLPQLPInterface& c) { c.XL(1) = 3.0, c.XU(1) = 4.0; }, 8,
       " *** ERROR 8: Starting value no. 2 violates bound: 3 0 4"},
      {[](NLPQLPInterface& c) { c.X(0, 0) = 5.0, c.XL(0) = 0.0, c.XU(0) = 4.5; }, 8,
       " *** ERROR 8: Starting value no. 1 violates bound: 0 5 4.5"},
      {[](NLPQLPInterface& c) { c.X(0, 0) = std::nan(""), c.XL(0) = 0.0, c.XU(0) = 1.0; }, 8,
       " *** ERROR 8: Starting value no. 1 violates bound: 0 nan 1"},
      // Passes; then the QP solver finds no room in KWA.
      {[](NLPQLPInterface& c) { c.KWA.resize(10); }, 5, "*** ERROR (QL): LIWAR too small!"},
      {[](NLPQLPInterface& c) { c.WA.resize(106); }, -1, ""},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(&one - cases);
    SmallProblem problem;
    problem.SetValues();
    problem.SetGradients();
    problem.core.IPRINT = 1;
    one.change(problem.core);
    EXPECT_EQ(FirstLine(Output([&] { problem.core.Step(); })), one.text);
    EXPECT_EQ(problem.core.IFAIL, one.ifail);
  }
}

/// Runs `problem` with printing; its output and IFAIL.
template <class Spoil>
std::pair<std::string, std::int32_t> Printed(SmallProblem& problem, Spoil&& spoil) {
  problem.core.IPRINT = 1;
  std::int32_t ifail = -1;
  const std::string text = Output([&] { ifail = problem.Run(spoil); });
  return {text, ifail};
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(NLPQLP, SaysWhyARunEnds) {
  SmallProblem impatient;
  impatient.core.MAXIT = 1;
  auto [text, ifail] = Printed(impatient, [](int) {});
  EXPECT_EQ(ifail, 1);
  EXPECT_EQ(FirstLine(text), " *** ERROR 1: More than MAXIT iterations");

  SmallProblem concave;
  concave.core.MODE = 1;
  concave.core.C.topLeftCorner(2, 2) = -Eigen::Matrix2d::Identity();
  concave.core.XL.setZero();
  concave.core.XU.setConstant(0.5);
  std::tie(text, ifail) = Printed(concave, [](int) {});
  EXPECT_EQ(ifail, 2);  // from the bound to the bound: d = (0.5, 0.5), d'Bd = -0.5
  EXPECT_TRUE(Contains(text, "\n *** ERROR 2: Search direction not profitable:  D*B*D = -0.5\n"))
      << text;

  SmallProblem rising;  // two line searches
  double level = 1.0;
  rising.core.TOL_NM = 0.0;
  std::tie(text, ifail) = Printed(rising, [&](int) { rising.core.F(0) = level *= 10.0; });
  EXPECT_EQ(ifail, 4);
  EXPECT_EQ(FirstLine(text), " *** WARNING: Starting non-monotone line search");
  EXPECT_TRUE(
      Contains(text, "\n *** ERROR 4: Error in line search, e.g., more than MAXFUN iterations\n"))
      << text;
  EXPECT_EQ(rising.core.X.col(0).head(2), Eigen::Vector2d::Zero());  // the last accepted iterate
  EXPECT_EQ(rising.core.F(0), 10.0);

  SmallProblem stuck;  // a constraint that cannot be met, nothing to descend
  std::tie(text, ifail) = Printed(stuck, [&](int) {
    stuck.core.DF.setZero();
    stuck.core.DG.setZero();
    stuck.core.G(0, 0) = -1.0;
  });
  EXPECT_EQ(ifail, 7);
  EXPECT_TRUE(Contains(text, "\n *** WARNING: Augmented Lagrangian search direction\n")) << text;
  EXPECT_TRUE(Contains(text, "\n *** ERROR 7: Underflow in D(T)*B*D and infeasible iterate\n"))
      << text;

  SmallProblem spoiled;
  std::tie(text, ifail) =
      Printed(spoiled, [&](int) { spoiled.core.DF(1) = std::numeric_limits<double>::infinity(); });
  EXPECT_EQ(ifail, 10);
  EXPECT_TRUE(Contains(text, "\n *** ERROR 10: Internal inconsistency in QL, division by zero\n"))
      << text;
}

/// Stands in for the QP solver: fails with one answer.
template <std::int32_t Answer>
void Fail(std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t,
          double*, const double*, const double*, const double*, const double*, const double*,
          double*, double*, double, std::int32_t, std::int32_t, std::int32_t& ifail, std::int32_t,
          double*, std::int32_t, std::int32_t*, std::int32_t) {
  ifail = Answer;
}

TEST(NLPQLP, PassesTheAnswersOfItsQpSolverOn) {
  const auto answer = [](QpSolve solver, std::int32_t& ifail) {
    SmallProblem problem;
    problem.SetValues();
    problem.SetGradients();
    NLPQLPInterface& c = problem.core;
    ifail = 0;
    return FirstLine(Output([&] {
      NLPQLP(c.L, c.M, c.ME, c.MMAX, c.N, c.NMAX, c.MNN2, c.X.data(), c.F.data(), c.G.data(),
             c.DF.data(), c.DG.data(), c.U.data(), c.XL.data(), c.XU.data(), c.C.data(), c.D.data(),
             c.ACC, c.ACCQP, c.STPMIN, c.MAXFUN, c.MAXIT, c.MAX_NM, c.TOL_NM, 1, c.MODE, c.IOUT,
             ifail, c.WA.data(), static_cast<std::int32_t>(c.WA.size()), c.KWA.data(),
             static_cast<std::int32_t>(c.KWA.size()), c.ACTIVE.data(),
             static_cast<std::int32_t>(c.ACTIVE.size()), c.LQL, solver);
    }));
  };
  std::int32_t ifail = 0;
  EXPECT_EQ(answer(&Fail<5>, ifail),
            " *** ERROR 5: Insufficient working space for QPSOLVE. Either LKWA or LWA to small");
  EXPECT_EQ(ifail, 5);
  EXPECT_EQ(answer(&Fail<3>, ifail),
            " *** ERROR 10: Internal inconsistency in QL, division by zero");
  EXPECT_EQ(ifail, 10);
  EXPECT_EQ(answer(&Fail<103>, ifail), " *** ERROR: Internal error in QL, IFAIL(QL) = 103");
  EXPECT_EQ(ifail, 103);
  // Answers that more weight on delta might cure lead as far as the last direction.
  for (const QpSolve solver : {&Fail<1>, &Fail<2>})
    EXPECT_EQ(answer(solver, ifail), " *** WARNING: Augmented Lagrangian search direction");
}

TEST(NLPQLP, PrintsItsResult) {
  SmallProblem problem;
  int num_functions = 1, num_gradients = 1;
  const auto [text, ifail] = Printed(problem, [&](int calls) {
    if (calls > 0) (problem.core.IFAIL == -1 ? num_functions : num_gradients) += 1;
  });
  EXPECT_EQ(ifail, 0);
  std::size_t from = 0;
  for (const std::string part :
       {" --- Final Convergence Analysis at Last Iterate ---",
        "Objective function value:      F(X)  =", "Solution values:               X     =",
        "Multiplier values:             U     =", "Constraint values:             G(X)  =",
        "Distance from lower bound:     X-XL  =", "Distance from upper bound:     XU-X  ="}) {
    const std::size_t at = text.find(part, from);
    ASSERT_NE(at, std::string::npos) << part << " in\n" << text;
    from = at;
  }
  EXPECT_TRUE(Contains(
      text, "Number of function calls:      NFUNC = " + std::to_string(num_functions) + '\n'))
      << text;
  EXPECT_TRUE(Contains(
      text, "Number of gradient calls:      NGRAD = " + std::to_string(num_gradients) + '\n'));
  EXPECT_TRUE(Contains(
      text, "Number of calls of QP solver:  NQL   = " + std::to_string(num_gradients) + '\n'));
  EXPECT_FALSE(Contains(text, "Best Iterate"));  // the last one is the best

  // A client that spoils its gradients: the best iterate is an earlier one than the last, the third.
  SmallProblem worse;
  worse.core.MAXIT = 4;
  const auto [cut, reason] = Printed(worse, [&](int calls) {
    if (calls > 0 && worse.core.IFAIL == -2) worse.core.DF *= 1e4;
  });
  EXPECT_EQ(reason, 1);
  const std::string best =
      "\n --- Final Convergence Analysis at Best Iterate ---\n"
      "   Best result at iteration:      ITER  = ";
  const std::size_t at = cut.find(best);
  ASSERT_NE(at, std::string::npos) << cut;
  EXPECT_LT(std::stoi(cut.substr(at + best.size())), 3);
  worse.core.MAX_NM = 0;  // keeps none
  worse.core.IFAIL = 0;
  worse.core.X.setZero();
  EXPECT_FALSE(Contains(Printed(worse, [](int) {}).first, "Best Iterate"));

  SmallProblem silent;
  EXPECT_EQ(Output([&] { silent.Run(); }), "");
}

}  // namespace
