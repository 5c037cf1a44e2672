#include "literature/collected_run.h"
#include "support/testing.h"

using corvath::algorithm::optimizer::NLPQLPInterface;
using literature::Gradients;

namespace {

TEST(NLPQLP, SolvesPublishedProblems) {
  for (const literature::CollectedProblem& problem : literature::ChosenHockSchittkowski())
    for (const Gradients gradients : {Gradients::kAnalytic, Gradients::kCentral})
      for (const int num_parallel : {1, 6}) {
        // Problem 2 has a local minimum, which six points at once happen to lead to.
        if (num_parallel == 6 && problem.number == 2) continue;
        const literature::CollectedRun run =
            literature::RunCollected(problem, gradients, num_parallel);
        EXPECT_TRUE(literature::IsSolved(problem, run))
            << "problem " << problem.number << ", " << num_parallel << " points: IFAIL "
            << run.ifail << ", f " << run.f << ", violation " << run.violation;
      }
}

/// Two variables, the sum of squares about (1, 2), x1 + x2 <= 2, from (0, 0): the client of the
/// reverse communication.
class SmallProblem {
 public:
  SmallProblem() : core(2, 0, 1, 1) {}
  void SetValues() {
    core.F(0) = std::pow(core.X(0, 0) - 1.0, 2) + std::pow(core.X(1, 0) - 2.0, 2);
    core.G(0, 0) = 2.0 - core.X(0, 0) - core.X(1, 0);
  }
  void SetGradients() {
    core.DF.head(2) << 2.0 * (core.X(0, 0) - 1.0), 2.0 * (core.X(1, 0) - 2.0);
    core.DG.row(0).head(2) << -1.0, -1.0;
  }
  /// Calls the core to the end; `spoil` may change what the client answered.
  template <class Spoil>
  std::int32_t Run(Spoil&& spoil) {
    SetValues();
    SetGradients();
    spoil(0);
    int calls = 0;
    for (core.Step(); core.IFAIL < 0 && calls < 10000; core.Step()) {
      ++calls;
      if (core.IFAIL == -1)
        SetValues();
      else
        SetGradients();
      spoil(calls);
    }
    return core.IFAIL;
  }
  std::int32_t Run() {
    return Run([](int) {});
  }
  NLPQLPInterface core;
};

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
  const std::pair<const char*, double& (*)(NLPQLPInterface&)> answers[] = {
      {"F", [](NLPQLPInterface& core) -> double& { return core.F(0); }},
      {"G", [](NLPQLPInterface& core) -> double& { return core.G(0, 0); }},
      {"DF", [](NLPQLPInterface& core) -> double& { return core.DF(0); }},
      {"DG", [](NLPQLPInterface& core) -> double& { return core.DG(0, 1); }},
  };
  for (const auto& [name, number] : answers)
    for (int spoiled = 0; spoiled < 6; ++spoiled) {
      SmallProblem problem;
      bool was_spoiled = false;
      const bool is_function = name[0] != 'D';
      const std::int32_t ifail = problem.Run([&, &number = number](int calls) {
        const bool was_asked = calls == 0 || is_function == (problem.core.IFAIL == -1);
        if (calls < spoiled || !was_asked) return;
        number(problem.core) = std::nan("");
        was_spoiled = true;
      });
      SCOPED_TRACE(std::string(name) + " from call " + std::to_string(spoiled));
      EXPECT_EQ(ifail > 0, was_spoiled) << ifail;
      EXPECT_TRUE(!was_spoiled || is_function || ifail == 10);  // the QP solver finds it
      EXPECT_TRUE(problem.core.X.col(0).head(2).allFinite());
    }
}

/// What `action` writes to the standard output.
template <class Action>
std::string Output(Action&& action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST(NLPQLP, RefusesWrongArgumentsAndNamesThem) {
  const double nan = std::nan("");
  // What is changed, the code, the text behind it.
  const std::tuple<std::function<void(NLPQLPInterface&)>, std::int32_t, const char*> cases[] = {
      {[](auto& c) { c.L = 0; }, 6, "Wrong input parameter L: 0"},
      {[](auto& c) { c.N = 0; }, 6, "Wrong input parameter N: 0"},
      {[](auto& c) { c.NMAX = 2; }, 6, "Wrong input parameter N: 2"},
      {[](auto& c) { c.M = -1; }, 6, "Wrong input parameter M: -1"},
      {[](auto& c) { c.M = 2; }, 6, "Wrong input parameter M: 2"},
      {[](auto& c) { c.ME = -1; }, 6, "Wrong input parameter ME: -1"},
      {[](auto& c) { c.ME = 2; }, 6, "Wrong input parameter ME: 2"},
      {[](auto& c) { c.MNN2 = 6; }, 6, "Wrong input parameter MNN2: 6"},
      {[](auto& c) { c.IPRINT = 5; }, 9, "Wrong input parameter IPRINT: 5"},
      {[](auto& c) { c.MODE = 2; }, 9, "Wrong input parameter MODE: 2"},
      {[](auto& c) { c.MAX_NM = 51; }, 9, "Wrong input parameter MAX_NM: 51"},
      {[](auto& c) { c.MAX_NM = -1; }, 9, "Wrong input parameter MAX_NM: -1"},
      {[](auto& c) { c.MAXFUN = 51; }, 9, "Wrong input parameter MAXFUN: 51"},
      {[](auto& c) { c.MAXFUN = -1; }, 9, "Wrong input parameter MAXFUN: -1"},
      {[](auto& c) { c.MAXIT = -1; }, 9, "Wrong input parameter MAXIT: -1"},
      {[](auto& c) { c.IOUT = 0; }, 9, "Wrong input parameter IOUT: 0"},
      {[](auto& c) { c.IFAIL = -3; }, 9, "Wrong input parameter IFAIL: -3"},
      {[](auto& c) { c.IFAIL = 1; }, 9, "Wrong input parameter IFAIL: 1"},
      {[](auto& c) { c.STPMIN = -0.5; }, 9, "Wrong input parameter STPMIN: -0.5"},
      {[](auto& c) { c.TOL_NM = -1.0; }, 9, "Wrong input parameter TOL_NM: -1"},
      {[=](auto& c) { c.ACCQP = nan; }, 9, "Wrong input parameter ACCQP: nan"},
      {[](auto& c) { c.ACC = 0.0; }, 9, "Wrong input parameter ACC: 0"},
      {[](auto& c) { c.WA.resize(9); }, 5, "Length of WA too short, should be at least "},
      {[](auto& c) { c.KWA.resize(9); }, 5, "Length of KWA too short, should be at least 10"},
      {[](auto& c) { c.ACTIVE.resize(11); }, 5,
       "Length of ACTIVE too short, should be at least 12"},
      {[](auto& c) { c.XL(1) = 3.0, c.XU(1) = 4.0; }, 8,
       "Starting value no. 2 violates bound: 3 0 4"},
      {[](auto& c) { c.X(0, 0) = 5.0, c.XU(0) = 4.5, c.XL(0) = 0.0; }, 8,
       "Starting value no. 1 violates bound: 0 5 4.5"},
      {[=](auto& c) { c.X(0, 0) = nan, c.XL(0) = 0.0, c.XU(0) = 1.0; }, 8,
       "Starting value no. 1 violates bound: 0 nan 1"},
      // The method itself needs no more of KWA; the QP solver does.
      {[](auto& c) { c.KWA.resize(10); }, 5, "Insufficient working space for QPSOLVE"},
  };
  for (const auto& [change, ifail, part] : cases) {
    SmallProblem problem;
    problem.SetValues();
    problem.SetGradients();
    problem.core.IPRINT = 1;
    change(problem.core);
    const std::string text = Output([&] { problem.core.Step(); });
    const std::string expected = " *** ERROR " + std::to_string(ifail) + ": " + part;
    EXPECT_TRUE(Contains(text, expected)) << text << "for " << expected;
    EXPECT_EQ(problem.core.IFAIL, ifail);
  }
}

TEST(NLPQLP, NeedsTheWorkThatItAsksFor) {
  SmallProblem usual, tight;
  tight.core.IPRINT = 1;
  tight.core.WA.resize(1);
  const std::string text = Output([&] { tight.core.Step(); });
  const std::size_t needed = std::stoul(text.substr(text.find("at least ") + 9));
  EXPECT_LE(needed, usual.core.WA.size());
  for (const std::size_t missing : {1, 0}) {
    tight.core.IPRINT = 0;
    tight.core.IFAIL = 0;
    tight.core.WA.assign(needed - missing, 0.0);
    tight.core.WA.shrink_to_fit();  // so that a sanitizer sees its end
    EXPECT_EQ(tight.Run(), missing > 0 ? 5 : 0);
  }
  usual.Run();
  EXPECT_EQ(tight.core.X, usual.core.X);
}

TEST(NLPQLP, SaysWhyARunEnds) {
  double level = 1.0;
  const struct {
    std::int32_t ifail;
    std::function<void(NLPQLPInterface&)> prepare;
    std::function<void(NLPQLPInterface&)> spoil;  ///< what the client answers
    const char *warning, *error;
  } cases[] = {
      {1, [](auto& c) { c.MAXIT = 1; }, [](auto&) {}, "", "1: More than MAXIT iterations"},
      // From bound to bound: d = (0.5, 0.5), d'Bd = -0.5.
      {2,
       [](auto& c) {
         c.MODE = 1, c.C.diagonal().array() = -1, c.XL.array() = 0, c.XU.array() = 0.5;
       },
       [](auto&) {}, "", "2: Search direction not profitable:  D*B*D = -0.5"},
      {4, [](auto& c) { c.TOL_NM = 0.0; }, [&](auto& c) { c.F(0) = level *= 10.0; },
       "Starting non-monotone line search",
       "4: Error in line search, e.g., more than MAXFUN iterations"},
      // A constraint that cannot be met, nothing to descend.
      {7, [](auto&) {}, [](auto& c) { c.DF.setZero(), c.DG.setZero(), c.G(0, 0) = -1.0; },
       "Augmented Lagrangian search direction", "7: Underflow in D(T)*B*D and infeasible iterate"},
  };
  for (const auto& one : cases) {
    SmallProblem problem;
    problem.core.IPRINT = 1;
    one.prepare(problem.core);
    const std::string text = Output([&] { problem.Run([&](int) { one.spoil(problem.core); }); });
    EXPECT_EQ(problem.core.IFAIL, one.ifail);
    EXPECT_TRUE(Contains(text, std::string(" *** ERROR ") + one.error + "\n")) << text;
    EXPECT_EQ(Contains(text, "WARNING"), *one.warning != '\0');
    EXPECT_TRUE(Contains(text, one.warning)) << text;
    EXPECT_EQ(problem.core.X.col(0).head(2), Eigen::Vector2d::Zero());  // the last iterate
    if (one.ifail == 4) {
      EXPECT_EQ(problem.core.F(0), 10.0);
    }
  }
}

TEST(NLPQLP, PrintsItsResult) {
  SmallProblem problem;
  int num_functions = 1, num_gradients = 1;
  const auto count = [&](int calls) {
    if (calls > 0) (problem.core.IFAIL == -1 ? num_functions : num_gradients) += 1;
  };
  EXPECT_EQ(Output([&] { problem.Run(count); }), "");
  problem.core.IFAIL = 0;
  problem.core.IPRINT = 1;
  problem.core.X.setZero();
  const std::string text = Output([&] { problem.Run(); });
  const std::string gradients = std::to_string(num_gradients) + '\n';
  std::size_t from = 0;
  for (const std::string& part : std::initializer_list<std::string>{
           " --- Final Convergence Analysis at Last Iterate ---", "F(X)  = ", "X     =\n",
           "Multiplier values:             U     =\n", "G(X)  =\n", "X-XL  =\n", "XU-X  =\n",
           "NFUNC = " + std::to_string(num_functions) + '\n', "NGRAD = " + gradients,
           "Number of calls of QP solver:  NQL   = " + gradients}) {
    from = text.find(part, from);
    ASSERT_NE(from, std::string::npos) << part << " in\n" << text;
  }
  EXPECT_FALSE(Contains(text, "Best Iterate"));  // the last one is the best

  // A client that spoils its gradients: the best iterate is an earlier one than the last, the third,
  // with the multipliers that it had; a memory of 0 keeps none.
  for (const std::int32_t max_nm : {10, 0}) {
    SmallProblem worse;
    worse.core.MAXIT = 4;
    worse.core.IPRINT = 1;
    worse.core.MAX_NM = max_nm;
    std::vector<double> multipliers;  // behind each QP
    const std::string cut = Output([&] {
      worse.Run([&](int calls) {
        if (calls > 0 && worse.core.IFAIL == -1) multipliers.push_back(worse.core.U(0));
        if (calls > 0 && worse.core.IFAIL == -2) worse.core.DF *= 1e4;
      });
    });
    const std::string best = "Best result at iteration:      ITER  = ", title = "U     =\n";
    const std::size_t at = cut.find(best);
    ASSERT_EQ(at != std::string::npos, max_nm > 0) << cut;
    if (max_nm == 0) continue;
    const auto iteration = std::stoul(cut.substr(at + best.size()));
    ASSERT_LT(iteration, 3u);
    const double expected = multipliers[iteration - 1];
    EXPECT_NEAR(std::stod(cut.substr(cut.find(title, at) + title.size())), expected,
                1e-5 * (1.0 + std::abs(expected)));
  }
}

}  // namespace
