#include "optimizer/nlpqlp_interface.h"
#include "optimizer/sqp_core.h"
#include "support/testing.h"

using corvath::algorithm::optimizer::NLPQLPInterface;
using namespace Eigen;

/// Single steps of the core, told apart by a QP solver that answers from a script.
namespace {

struct QpCall {
  std::int32_t num_rows, num_variables;
  Eigen::MatrixXd c, a;  ///< with the entries of delta, asked for or not
  VectorXd linear, b, lower, upper;
};
struct QpAnswer {
  std::int32_t ifail;
  VectorXd d, u;  ///< u: rows, lower, upper bounds
};
std::vector<QpCall> calls;
std::function<QpAnswer(const QpCall&)> script;

void ScriptedQp(std::int32_t m, std::int32_t, std::int32_t mmax, std::int32_t n, std::int32_t nmax,
                std::int32_t mnn, double* c, const double* linear, const double* a, const double* b,
                const double* lower, const double* upper, double* x, double* u, double,
                std::int32_t, std::int32_t, std::int32_t& ifail, std::int32_t, double*,
                std::int32_t, std::int32_t*, std::int32_t) {
  using Eigen::Map;
  calls.push_back({m, n, Map<Eigen::MatrixXd>(c, nmax, nmax),
                   Map<const Eigen::MatrixXd>(a, mmax, nmax), Map<const VectorXd>(linear, n),
                   Map<const VectorXd>(b, m), Map<const VectorXd>(lower, n),
                   Map<const VectorXd>(upper, n)});
  const QpAnswer answer = script(calls.back());
  ifail = answer.ifail;
  Map<VectorXd>(u, mnn).setZero();
  Map<VectorXd>(u, answer.u.size()) = answer.u;
  Map<VectorXd>(x, answer.d.size()) = answer.d;
}

/// NLPQLPInterface::Step with the scripted QP solver.
void Step(NLPQLPInterface& c) {
  const auto size = [](const auto& array) { return static_cast<std::int32_t>(array.size()); };
  corvath::algorithm::optimizer::NLPQLP(
      c.L, c.M, c.ME, c.MMAX, c.N, c.NMAX, c.MNN2, c.X.data(), c.F.data(), c.G.data(), c.DF.data(),
      c.DG.data(), c.U.data(), c.XL.data(), c.XU.data(), c.C.data(), c.D.data(), c.ACC, c.ACCQP,
      c.STPMIN, c.MAXFUN, c.MAXIT, c.MAX_NM, c.TOL_NM, c.IPRINT, c.MODE, c.IOUT, c.IFAIL,
      c.WA.data(), size(c.WA), c.KWA.data(), size(c.KWA), c.ACTIVE.data(), size(c.ACTIVE), c.LQL,
      &ScriptedQp);
}

/// Two variables between `lower` and `upper`, two inequalities; at its start.
NLPQLPInterface TwoByTwo(const Vector2d& x, const Vector2d& lower, const Vector2d& upper) {
  NLPQLPInterface core(2, 0, 2, 1);
  core.X.col(0).head(2) = x;
  core.XL = lower;
  core.XU = upper;
  calls.clear();
  return core;
}

TEST(SqpSteps, RelaxTheRowsThatNoDirectionMeets) {
  NLPQLPInterface core = TwoByTwo({0.5, 0.5}, {0, 0}, {1, 1});
  core.G.col(0) << -1.0, 3.0;
  core.DF.head(2) << 1.0, 2.0;
  core.DG.leftCols(2) << -0.4, -0.4, 1.0, 0.0;
  const Vector2d d(-0.05, -0.1);
  const double delta = 0.25;
  script = [&](const QpCall& call) -> QpAnswer {
    if (call.num_rows == 0) return {0, Vector2d::Zero(), {}};
    if (calls.size() == 1 || calls.size() > 3) return {1, {}, {}};
    return {0, Vector3d(d(0), d(1), calls.size() == 2 ? 0.95 : delta),
            VectorXd{{1, 0, 3, 4, 5, 6, 7, 8}}};
  };
  Step(core);
  ASSERT_EQ(core.IFAIL, -1);
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0].num_variables, 2);
  EXPECT_EQ(calls[1].num_variables, 3);
  EXPECT_EQ(calls[1].a.col(2), Vector2d(1.0, -3.0));  // every row is active at the start
  EXPECT_EQ(calls[1].linear, Vector3d(1.0, 2.0, 0.0));
  EXPECT_EQ(calls[1].lower, Vector3d(-0.5, -0.5, 0.0));
  EXPECT_EQ(calls[1].upper, Vector3d(0.5, 0.5, 1.0));
  EXPECT_EQ(calls[1].c(2, 2), 1.0);  // delta's weight, raised as delta was 0.95
  EXPECT_EQ(calls[2].c(2, 2), 100.0);
  // Rows, lower and upper bounds of x, then those of delta.
  EXPECT_EQ(core.U, (VectorXd{{1, 0, 3, 4, 6, 7, 5, 8}}));

  // Accepted: the second row, with no multiplier and well met, is no longer relaxed. The weight
  // follows from the last iteration: (2 u'A d / (1 - delta))^2 / d'Bd.
  core.F(0) = -100.0;
  Step(core);
  ASSERT_EQ(core.IFAIL, -2);
  EXPECT_EQ(core.ACTIVE[0], 1);
  EXPECT_EQ(core.ACTIVE[1], 0);
  Step(core);
  ASSERT_EQ(calls.size(), 9u);
  EXPECT_EQ(calls[4].a.col(2), Vector2d(1.0, 0.0));
  const double slope = -0.4 * d.sum() / (1.0 - delta);
  EXPECT_NEAR(calls[4].c(2, 2), 4.0 * slope * slope / d.squaredNorm(), 1e-9);
  // The merit function's gradient betrays the penalty of the first row: 4 u^2 / (1 - delta + d'Bd),
  // with which the merit function rose, times ten.
  const double r = 10.0 * 4.0 / (1.0 - delta + d.squaredNorm());
  EXPECT_TRUE(calls[8].linear.isApprox(Vector2d(1.0, 2.0) + (1.0 + r) * Vector2d(0.4, 0.4), 1e-12));
}

TEST(SqpSteps, FallBackToTheMeritFunction) {
  // The first matrix stands in the lower triangle, first multipliers in U: v of the merit function.
  NLPQLPInterface core = TwoByTwo({0.0, 0.5}, {0, 0}, {1, 1});
  core.MODE = 1;
  core.C.topLeftCorner(2, 2) << 2.0, 99.0, 0.5, 3.0;
  core.U.head(6) << 2.0, 0.1, 0.2, 0.0, 0.0, 0.03;
  core.G.col(0) << -1.0, 5.0;
  core.DF.head(2) << 1.0, 2.0;
  core.DG.leftCols(2) << -4.0, -3.0, 1.0, 2.0;
  script = [](const QpCall& call) -> QpAnswer {
    if (call.num_rows > 0) return {1, {}, {}};
    return {0, Vector2d(0.1, -0.4), Eigen::Vector4d(0.5, 0.0, 0.0, 0.25)};
  };
  Step(core);
  EXPECT_EQ(core.IFAIL, -1);
  ASSERT_EQ(calls.size(), 6u);
  for (const std::size_t k : {1, 2, 3, 4}) EXPECT_EQ(calls[k].c(2, 2), std::pow(100.0, k - 1));
  EXPECT_EQ(calls[0].c(0, 1), 0.5);
  // Active are both rows (5 <= 0.1 / r), the lower bound of x1 and the upper one of x2, with r = 0.01
  // and the weights v - r g.
  const Vector2d weights(2.0 + 0.01, 0.1 - 0.05);
  const Vector2d bounds(-0.2, 0.03 - 0.005);
  EXPECT_TRUE(calls[5].linear.isApprox(
      core.DF.head(2) - core.DG.leftCols(2).transpose() * weights + bounds, 1e-14));
  // The rows keep their multipliers.
  EXPECT_EQ(core.U.head(6), (VectorXd{{2.0, 0.1, 0.5, 0.0, 0.0, 0.25}}));
}

TEST(SqpSteps, WeighDeltaMoreWhereTheMeritFunctionDoesNotFall) {
  NLPQLPInterface core = TwoByTwo({0.0, 0.0}, {-9, -9}, {9, 9});
  core.G.setOnes();
  core.DF.head(2) << 1.0, 1.0;
  script = [](const QpCall& call) -> QpAnswer {  // uphill, whatever is asked
    return {0, VectorXd::Unit(call.num_variables, 0), {}};
  };
  Step(core);
  EXPECT_EQ(core.IFAIL, 2);
  ASSERT_EQ(calls.size(), 5u);
  for (const std::size_t k : {1, 2, 3}) {
    EXPECT_EQ(calls[k].num_variables, 3);
    EXPECT_EQ(calls[k].c(2, 2), std::pow(100.0, k));
  }
  EXPECT_EQ(calls[4].num_rows, 0);
}

TEST(SqpSteps, EndWhereTheQpSolverCannotGoOn) {
  const std::tuple<std::int32_t, std::int32_t, const char*> cases[] = {
      {5, 5, " *** ERROR 5: Insufficient working space for QPSOLVE. Either LKWA or LWA to small\n"},
      {3, 10, " *** ERROR 10: Internal inconsistency in QL, division by zero\n"},
      {103, 103, " *** ERROR: Internal error in QL, IFAIL(QL) = 103\n"},
      // What more weight on delta might cure leads as far as the last direction.
      {1, 10, " *** WARNING: Augmented Lagrangian search direction\n"},
      {2, 10, " *** WARNING: Augmented Lagrangian search direction\n"},
  };
  for (const auto& [answer, ifail, text] : cases) {
    NLPQLPInterface core = TwoByTwo({0.0, 0.0}, {-9, -9}, {9, 9});
    core.IPRINT = 1;
    script = [&, code = answer](const QpCall&) -> QpAnswer { return {code, {}, {}}; };
    testing::internal::CaptureStdout();
    Step(core);
    EXPECT_EQ(testing::internal::GetCapturedStdout().find(text), 0u) << text;
    EXPECT_EQ(core.IFAIL, ifail);
  }
}

TEST(SqpSteps, StopByTheirMeasures) {
  // With the accuracy 0.01: |f'd| + sum |u g| < 0.01, violations up to 0.1, and one of: a gradient
  // of the Lagrangian up to 0.316, d'Bd up to 0.01, the third such iterate. x2 is on its lower bound.
  const struct {
    double slope, length, g;
    VectorXd u;
    int num_iterations;  ///< that the run takes; 0: it does not stop
  } cases[] = {
      {-0.002, 2.0, 0.05, VectorXd::Zero(6), 1},
      {-0.006, 2.0, 0.05, VectorXd::Zero(6), 0},              // |f'd| = 0.012
      {-0.002, 2.0, 0.05, 0.2 * VectorXd::Unit(6, 0), 0},     // u1 g1 = 0.01
      {-0.002, 2.0, 0.05, 0.02 * VectorXd::Unit(6, 2), 0},    // lower bound of x1, 0.5 away
      {-0.002, 2.0, 0.05, 0.0002 * VectorXd::Unit(6, 5), 0},  // upper bound of x2, 50 away
      {-0.002, 2.0, -0.045, VectorXd::Zero(6), 1},            // both rows: 0.09
      {-0.002, 2.0, -0.055, VectorXd::Zero(6), 0},
      {-0.002, 2.0, 0.05, 0.4 * VectorXd::Unit(6, 3), 3},
      {-0.002, 0.09, 0.05, 0.4 * VectorXd::Unit(6, 3), 1},
  };
  for (const auto& one : cases) {
    NLPQLPInterface core = TwoByTwo({0.5, 0.0}, {0, 0}, {50, 50});
    core.ACC = 0.01;
    core.DF.head(2) << one.slope, 0.0;
    core.G.setConstant(one.g);
    script = [&](const QpCall& call) -> QpAnswer {
      return {0, one.length * VectorXd::Unit(call.num_variables, 0), one.u};
    };
    int num_iterations = 0;
    while (num_iterations < 4 && (num_iterations == 0 || core.IFAIL < 0)) {
      ++num_iterations;
      Step(core);
      if (core.IFAIL != -1 || one.num_iterations == 0) break;
      core.F(0) -= 1.0;  // accepted
      Step(core);
      ASSERT_EQ(core.IFAIL, -2);
    }
    SCOPED_TRACE(&one - cases);
    EXPECT_EQ(core.IFAIL == 0, one.num_iterations > 0);
    EXPECT_EQ(num_iterations, std::max(one.num_iterations, 1));
  }
}

TEST(SqpSteps, JudgeARoundOfPoints) {
  NLPQLPInterface core(2, 0, 0, 3);
  core.STPMIN = 0.25;  // steps 1, 0.5, 0.25
  core.XL.setConstant(-10.0);
  core.XU.setConstant(10.0);
  core.DF.head(2) << -2.0, 5.0;  // f'd = -100
  script = [](const QpCall&) -> QpAnswer { return {0, Vector2d(40.0, -4.0), {}}; };
  Step(core);
  ASSERT_EQ(core.IFAIL, -1);
  const Eigen::MatrixXd cut{{10.0, 10.0, 10.0}, {-4.0, -2.0, -1.0}};
  EXPECT_EQ(core.X.topRows(2), cut);
  core.F << -0.5, -0.4, -50.0;  // a hundredth of 100, of 50 would be enough
  Step(core);
  ASSERT_EQ(core.IFAIL, -2);
  const Vector2d step = cut.col(2);
  EXPECT_EQ(core.X.col(0).head(2), step);
  EXPECT_EQ(core.F(0), -50.0);
  core.DF.head(2) += 2.0 * step;
  Step(core);  // B meets the secant condition of this step
  EXPECT_TRUE((core.C.topLeftCorner(2, 2) * step).isApprox(2.0 * step, 1e-14));
}

/// One variable without bounds: the merit function is f. Values for the trials that follow; IFAIL.
std::int32_t Feed(NLPQLPInterface& core, std::initializer_list<double> values) {
  for (const double value : values) {
    if (core.IFAIL == -2) core.Step();  // the gradient stays
    core.F(0) = value;
    core.Step();
  }
  return core.IFAIL;
}

NLPQLPInterface Falling(double f) {
  NLPQLPInterface core(1, 0, 0, 1);
  core.MAXFUN = 2;
  core.MAX_NM = 3;
  core.F(0) = f;
  core.DF(0) = -0.1;  // at most 0.02 of f is wanted in each step
  core.Step();
  return core;
}

TEST(SqpSteps, SearchOnceMoreAgainstAnOlderValue) {
  const double far = 1e6;
  const std::pair<double, double> firsts[] = {
      {2.0, 202.0}, {0.0, 100.0}, {-2.0, 198.0}};  // with the tolerance 100
  for (const auto& [f, reference] : firsts)
    for (const bool above : {false, true}) {
      NLPQLPInterface core = Falling(f);
      EXPECT_EQ(Feed(core, {far, far, reference + (above ? 0.1 : -0.1)}), above ? -1 : -2) << f;
    }
  // Later the largest of the last three start values: of 10, 4, 7, 5 that is 7.
  for (const bool above : {false, true}) {
    NLPQLPInterface core = Falling(10.0);
    EXPECT_EQ(Feed(core, {4.0, far, far, 7.0, 5.0}), -2);
    EXPECT_EQ(Feed(core, {far, far, above ? 7.1 : 6.9}), above ? -1 : -2);
    if (above) {
      EXPECT_EQ(Feed(core, {far}), 4);
    }
  }
}

}  // namespace
