#include "optimizer/optimizer_nlpqlp.h"

#include "foundation/exception.h"
#include "literature/hock_schittkowski.h"
#include "optimizer/gradient_estimate.h"
#include "optimizer/stencil.h"
#include "support/points.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

#include <typeinfo>

using namespace corvath::algorithm::optimizer;
using Eigen::MatrixXd, Eigen::VectorXd, Eigen::RowVectorXd;
using literature::Dual;
using Optimizer = corvath::algorithm::optimizer::OptimizerNLPQLP<double>;
using Settings = corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>;

namespace {

constexpr auto kCentral = NumericalDifferences::kCentral;
constexpr auto kForward = NumericalDifferences::kForward;
constexpr auto kBackward = NumericalDifferences::kBackward;
constexpr auto kFivePoint = NumericalDifferences::kFivePoint;
constexpr NumericalDifferences kTypes[] = {kCentral, kForward, kBackward, kFivePoint};

/// A collected problem as a client of the design loop sees it. A problem without bounds gets wide
/// ones; the step of the differences is 1e-5.
class Client {
 public:
  explicit Client(literature::CollectedProblem problem) : problem_(std::move(problem)) {}
  explicit Client(int number) {
    for (const auto& problem : literature::ChosenHockSchittkowski())
      if (problem.number == number) problem_ = problem;
  }

  Settings MakeSettings(NumericalDifferences type) const {
    const int n = problem_.NumVariables();
    Settings settings(static_cast<std::uint64_t>(n), 1,
                      static_cast<std::uint64_t>(problem_.num_equalities),
                      static_cast<std::uint64_t>(problem_.num_inequalities));
    VectorXd lower(n), upper(n), start(n);
    for (int i = 0; i < n; ++i) {
      lower(i) = std::max(problem_.Lower(i), -100.0);
      upper(i) = std::min(problem_.Upper(i), 100.0);
      start(i) = std::clamp(problem_.start[static_cast<std::size_t>(i)], lower(i), upper(i));
    }
    settings.SetLowerBounds(lower);
    settings.SetUpperBounds(upper);
    settings.SetStartDesigns(start.transpose());
    settings.SetGradientDx(1e-5);
    settings.SetAccuracy(1e-7);
    settings.SetNumericalDifferences(type);
    return settings;
  }

  /// Objective, equalities and inequalities of each design.
  MatrixXd Respond(const MatrixXd& designs) const {
    MatrixXd responses(designs.rows(), 1 + problem_.NumConstraints());
    Dual g[1 + literature::kMaxConstraints];
    for (Eigen::Index row = 0; row < designs.rows(); ++row) {
      const VectorXd x = designs.row(row);
      responses(row, 0) = EvaluateAt(problem_, x.data(), g).value;
      for (Eigen::Index j = 1; j < responses.cols(); ++j) responses(row, j) = g[j].value;
    }
    return responses;
  }

  /// Whether the evaluation of a design succeeds; its responses are NaN where it does not.
  std::function<bool(const RowVectorXd& design)> succeeds = [](const auto&) { return true; };

  /// Called before each Appraise with the responses of the round: may hand others in.
  std::function<void(Optimizer& optimizer, const MatrixXd& responses)> before_appraisal =
      [](auto&, const auto&) {};

  void Set(Optimizer& optimizer, const MatrixXd& responses) const {
    optimizer.SetObjectives(responses.leftCols(1));
    optimizer.SetEqualities(responses.middleCols(1, problem_.num_equalities));
    optimizer.SetInequalities(responses.rightCols(problem_.num_inequalities));
  }

  /// The loop to its end. The designs of its rounds are recorded.
  void Run(Optimizer& optimizer, const Settings& settings) {
    rounds.clear();
    optimizer.Initialize(settings);
    do {
      const MatrixXd designs = optimizer.GetNextDesigns();
      rounds.push_back(designs);
      MatrixXd responses = Respond(designs);
      std::vector<bool> success;
      for (Eigen::Index row = 0; row < designs.rows(); ++row) {
        success.push_back(succeeds(designs.row(row)));
        if (!success.back()) responses.row(row).setConstant(std::nan(""));
      }
      optimizer.SetInputs(designs);
      optimizer.SetCriteriaSuccessInfo(success);
      Set(optimizer, responses);
      before_appraisal(optimizer, responses);
      optimizer.Appraise();
      optimizer.Adapt();
    } while (!optimizer.IsTerminated());
    optimizer.Finalize();
  }
  void Run(Optimizer& optimizer, NumericalDifferences type) { Run(optimizer, MakeSettings(type)); }

  double Optimum() const { return problem_.optimum; }
  std::vector<MatrixXd> rounds;

 private:
  literature::CollectedProblem problem_;
};

/// Objective, equalities and inequalities of the best design.
RowVectorXd BestResponses(const Optimizer& optimizer) {
  const MatrixXd h = optimizer.GetBestEqualities(), g = optimizer.GetBestInequalities();
  RowVectorXd all(1 + h.cols() + g.cols());
  all << optimizer.GetBestObjectives()(0, 0), h, g;
  return all;
}

TEST(OptimizerNLPQLP, SolvesThroughTheDesignLoopWithEveryTypeOfDifferences) {
  for (const NumericalDifferences type : kTypes)
    for (const int number : {5, 12, 14, 35, 43, 71, 76, 100})
      for (const std::uint64_t num_parallel : {1u, 3u}) {
        Client client(number);
        Settings settings = client.MakeSettings(type);
        settings.SetNumberParallel(num_parallel);
        settings.SetMinStepsize(1e-3);
        Optimizer optimizer;
        client.Run(optimizer, settings);
        SCOPED_TRACE(std::to_string(number) + ", type " + std::to_string(static_cast<int>(type)));
        EXPECT_TRUE(optimizer.IsConverged()) << optimizer.GetFailure();
        // One-sided differences are good to the step times the curvature.
        EXPECT_NEAR(optimizer.GetBestObjectives()(0, 0), client.Optimum(),
                    1e-4 * std::max(1.0, std::abs(client.Optimum())));
        EXPECT_EQ(BestResponses(optimizer), client.Respond(optimizer.GetBestInputs()));
        EXPECT_EQ(optimizer.GetBestIndex(),
                  std::vector<std::uint64_t>{optimizer.GetNumAppraised()});

        const Eigen::Index n = client.rounds[0].cols();
        const Eigen::Index later = type == kCentral ? 2 * n : type == kFivePoint ? 4 * n : n + 1;
        ASSERT_GE(client.rounds.size(), 4u);
        EXPECT_EQ(client.rounds[0].rows(), 0);
        EXPECT_EQ(client.rounds[1].rows(), later == n + 1 ? later : later + 1);
        for (std::size_t i = 2; i < client.rounds.size(); ++i) {
          const Eigen::Index rows = client.rounds[i].rows();
          EXPECT_TRUE(rows == static_cast<Eigen::Index>(num_parallel) || rows == later);
        }
      }
}

TEST(OptimizerNLPQLP, GoesOnWhereDesignsFail) {
  for (const NumericalDifferences type : kTypes) {
    // Everything with x1 + x2 above 2.5 fails; the optimum of 12 lies at (2, 3), so that the method
    // presses against the edge and must not be trapped in an exception.
    Client client(12);
    client.succeeds = [](const RowVectorXd& x) { return x.sum() <= 2.5; };
    Optimizer optimizer;
    Settings settings = client.MakeSettings(type);
    settings.SetMaxNumFunctionCalls(500);
    client.Run(optimizer, settings);
    ASSERT_EQ(optimizer.GetBestInputs().rows(), 1);
    EXPECT_LE(optimizer.GetBestInputs().sum(), 2.5);
    EXPECT_LT(optimizer.GetBestObjectives()(0, 0), -10.0);  // f is 0 at the start
  }
  // One design of every later stencil fails: the plane leans on the known point in the middle.
  Client client(76);
  client.succeeds = [&](const RowVectorXd& x) {
    const MatrixXd& round = client.rounds.back();
    return client.rounds.size() == 2 || round.rows() == 1 || x != round.row(3);
  };
  Optimizer optimizer;
  client.Run(optimizer, kCentral);
  EXPECT_TRUE(optimizer.IsConverged()) << optimizer.GetFailure();
  EXPECT_NEAR(optimizer.GetBestObjectives()(0, 0), client.Optimum(), 1e-4);
}

TEST(OptimizerNLPQLP, TakesFivePointsWithFailedDesigns) {
  // f = x1^2 + 3 x2: the first trial is the start less the gradient, no further than to where g seems
  // to be 0. The first of the four designs of x1 fails: of f the mean of (f(x + kh) - f) / kh over
  // k = -1, 1, 2; g is taken as it stands, also from a design that failed.
  const double h = 0.125, slope = 2.0 + 2.0 * h / 3.0;
  const auto far = [](const Dual* x, Dual* g) {
    g[1] = x[1] + 50.0;
    return x[1] * x[1] + 3.0 * x[2];
  };
  const auto near = [](const Dual* x, Dual* g) {
    g[1] = x[1] + (x[1] - 1.0) * (x[1] - 1.0);  // slope 1 at the start
    return x[1] * x[1] + 3.0 * x[2];
  };
  const std::pair<literature::CollectedProblem::Evaluate, double> cases[] = {{far, 1.0 - slope},
                                                                             {near, 0.0}};
  for (const auto& [evaluate, x1] : cases) {
    Client client(literature::CollectedProblem{0, 0, 1, {1, 0}, {}, {}, 0, evaluate});
    client.succeeds = [&](const auto& x) { return x(0) != 1.0 - 2.0 * h; };
    client.before_appraisal = [&](Optimizer& one, const MatrixXd&) {
      MatrixXd responses = client.Respond(client.rounds.back());
      if (client.rounds.size() == 2) responses(1, 0) = 1e9;
      client.Set(one, responses);
    };
    Settings settings = client.MakeSettings(kFivePoint);
    settings.SetGradientDx(h);
    Optimizer optimizer;
    client.Run(optimizer, settings);
    EXPECT_TRUE(client.rounds[2].isApprox(Eigen::RowVector2d(x1, -3.0), 1e-12)) << client.rounds[2];
  }
}

TEST(OptimizerNLPQLP, EndsWithoutConvergence) {
  Client client(43);
  int count = 0;
  const auto first_rounds = [&](const auto&) { return client.rounds.size() <= 2; };
  const struct {
    NumericalDifferences type;
    std::uint64_t num_parallel, stack_size;
    std::function<bool(const RowVectorXd&)> succeeds;
    std::int32_t failure;
    Eigen::Index num_best;
    std::size_t num_rounds;
  } cases[] = {
      {kCentral, 1, 10, [&](const auto&) { return ++count == 1; }, 1001, 0, 2},  // the start alone
      {kForward, 1, 10, [&](const auto&) { return ++count > 1; }, 1001, 0, 2},   // all others
      // All designs of the second gradient: the iterate that asked for it is kept.
      {kForward, 1, 10,
       [&](const auto&) { return first_rounds(0) || client.rounds.back().rows() == 1; }, 1002, 1,
       0},
      // Every trial: the line search fails after 50 trials or one round, with a stack for twice.
      {kCentral, 1, 10, first_rounds, 4, 0, 2 + 100},
      {kCentral, 1, 0, first_rounds, 4, 0, 2 + 50},
      {kCentral, 4, 10, first_rounds, 4, 0, 2 + 1},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(&one - cases);
    count = 0;
    client.succeeds = one.succeeds;
    Settings settings = client.MakeSettings(one.type);
    settings.SetNumberParallel(one.num_parallel);
    settings.SetStackSize(one.stack_size);
    Optimizer optimizer;
    client.Run(optimizer, settings);
    EXPECT_EQ(optimizer.GetFailure(), one.failure);
    EXPECT_FALSE(optimizer.IsConverged());
    EXPECT_EQ(optimizer.GetBestInputs().rows(), one.num_best);
    EXPECT_EQ(optimizer.GetBestInequalities().cols(), 3);
    EXPECT_TRUE(one.num_rounds == 0 || client.rounds.size() == one.num_rounds);
    if (one.num_parallel > 1) {
      // The steps of a round stand in a constant ratio, by default the golden section.
      const MatrixXd steps = client.rounds[2].rowwise() - client.rounds[1].row(0);
      EXPECT_NEAR(steps.row(3).norm() / steps.row(2).norm(), (std::sqrt(5.0) - 1.0) / 2.0, 1e-12);
    }
    EXPECT_ERROR(
        corvath::utils::runtime_error,
        "NLPQLP can only provide the index of the best design during the iteration, if it is "
        "converged.",
        optimizer.GetBestIndex());
  }
}

TEST(OptimizerNLPQLP, KeepsItsBudgetAtTheEndsOfRoundsAndTheBestDesign) {
  Client client(71);
  Settings settings = client.MakeSettings(kForward);
  for (const std::uint64_t budget : {1u, 5u, 12u, 20u}) {
    settings.SetMaxNumFunctionCalls(budget);
    Optimizer optimizer;
    client.Run(optimizer, settings);
    EXPECT_FALSE(optimizer.IsConverged());
    EXPECT_GE(optimizer.GetNumAppraised(), budget);
    EXPECT_LT(optimizer.GetNumAppraised(), budget + 5);  // at most one round more
    if (optimizer.GetBestInputs().rows() > 0) {
      EXPECT_EQ(BestResponses(optimizer), client.Respond(optimizer.GetBestInputs()));
    }
    EXPECT_EQ(optimizer.GetBestInputs().rows(), budget > 5 ? 1 : 0);
  }
}

TEST(OptimizerNLPQLP, LimitsItsFirstStepInputByInput) {
  // From (-2, 1.5) the slopes of problem 2 are in the thousands and falling along x1, x2.
  Client client(2);
  Settings settings = client.MakeSettings(kCentral);
  settings.SetUseInitialStepsizeLimit(true);
  settings.SetMaxStepsize(Eigen::Vector2d(0.05, 0.02));
  Optimizer optimizer;
  client.Run(optimizer, settings);
  const Eigen::RowVector2d step = client.rounds[2].row(0) - settings.GetStartDesigns().row(0);
  EXPECT_TRUE(step.cwiseAbs().isApprox(Eigen::RowVector2d(0.05, 0.02), 1e-6)) << step;
  EXPECT_TRUE(optimizer.IsConverged());
}

TEST(OptimizerNLPQLP, StartsAgainAndRefusesOtherSettings) {
  Client client(71);
  Optimizer optimizer;
  Settings settings = client.MakeSettings(kCentral);
  client.Run(optimizer, settings);
  const std::vector<MatrixXd> rounds = client.rounds;
  const std::uint64_t num_appraised = optimizer.GetNumAppraised();
  const MatrixXd optimum = optimizer.GetBestInputs();
  client.before_appraisal = [&](Optimizer& one, const MatrixXd& responses) {
    for (Eigen::Index k = 0; responses.rows() > 0 && k < responses.cols(); ++k) {
      MatrixXd spoiled = responses;
      spoiled(responses.rows() - 1, k) = std::nan("");
      client.Set(one, spoiled);
      EXPECT_THROW(one.Appraise(), corvath::utils::runtime_error);  // and changes nothing
    }
    client.Set(one, responses);
  };
  client.Run(optimizer, settings);
  EXPECT_EQ(client.rounds, rounds);
  EXPECT_EQ(optimizer.GetNumAppraised(), num_appraised);
  EXPECT_EQ(optimizer.GetRounds().size(), rounds.size());
  settings.SetMaxNumFunctionCalls(20);
  client.Run(optimizer, settings);
  EXPECT_FALSE(optimizer.IsConverged());
  EXPECT_THROW(
      optimizer.Initialize(corvath::algorithm::optimizer::OptimizerSettingsGradientBase<double>(4)),
      std::bad_cast);
  // From the optimum it converges before the core accepts any iterate.
  settings.SetStartDesigns(optimum);
  settings.SetAccuracy(0.01);
  client.Run(optimizer, settings);
  EXPECT_EQ(client.rounds.size(), 2u);
  EXPECT_EQ(BestResponses(optimizer), client.Respond(optimum));
}

TEST(OptimizerNLPQLP, WarnsOfDisplacedDesignsOnceInARun) {
  // A client that rounds its designs to two digits moves them by more than half a step of 1e-5.
  Client client(12);
  client.before_appraisal = [&](Optimizer& one, const auto&) {
    if (client.rounds.size() > 2)
      one.SetInputs((100.0 * client.rounds.back()).array().round() / 100.0);
  };
  Settings settings = client.MakeSettings(kCentral);
  settings.SetMaxNumFunctionCalls(30);
  const auto log = boost::make_shared<corvath::utils::log::VectorLog>();
  Optimizer optimizer;
  optimizer.SetLogger(log);
  for (const std::size_t run : {1, 2}) {
    support::MessageOf([&] { client.Run(optimizer, settings); });  // of equal designs no plane
    ASSERT_EQ(log->GetLines().size(), run);
    EXPECT_EQ(log->GetLines()[run - 1].second.substr(0, 48),
              L"NLPQLP: Check the format of design point variabl");
  }
}

TEST(Stencil, StaysWithinTheBounds) {
  const VectorXd step = VectorXd::Constant(1, 0.1);
  const VectorXd lower = VectorXd::Constant(1, 0.0), upper = VectorXd::Constant(1, 1.0);
  // The type, the centre, the designs: the base first where the type evaluates it.
  const std::tuple<NumericalDifferences, double, std::vector<double>> cases[] = {
      {kForward, 0.5, {0.5, 0.6}},
      {kForward, 1.0, {0.9, 1.0}},  // the base moves inside
      {kForward, -0.2, {0.1, 0.0}},
      {kBackward, 0.5, {0.5, 0.4}},
      {kBackward, 0.0, {0.1, 0.0}},
      {kBackward, 1.2, {0.9, 0.8}},
      {kCentral, 0.5, {0.4, 0.6}},
      {kCentral, 0.05, {0.0, 0.2}},
      {kCentral, 0.95, {0.8, 1.0}},
      {kFivePoint, 0.5, {0.3, 0.4, 0.6, 0.7}},
      {kFivePoint, 0.1, {0.0, 0.1, 0.3, 0.4}},
      {kFivePoint, 0.9, {0.6, 0.7, 0.9, 1.0}}};
  for (const auto& [type, centre, expected] : cases) {
    const Stencil stencil(type, step, lower, upper);
    const MatrixXd designs = stencil.Designs(VectorXd::Constant(1, centre), false);
    const auto rows = static_cast<Eigen::Index>(expected.size());
    EXPECT_LT(support::Deviation(designs, Eigen::Map<const VectorXd>(expected.data(), rows)), 1e-15)
        << static_cast<int>(type) << " at " << centre;
    EXPECT_TRUE(stencil.Fits(designs, false));
    MatrixXd moved = designs;
    moved(moved.rows() - 1, 0) += type == kCentral ? 0.11 : 0.06;
    EXPECT_FALSE(stencil.Fits(moved, false));
  }
  EXPECT_MESSAGE("Programming error in NLPQLP: Numerical Differences Type does not fit.",
                 Stencil(static_cast<NumericalDifferences>(9), step, lower, upper).Size(true));
}

TEST(GradientEstimate, IsExactForWhatItsTypeCanCarry) {
  // A plane by least squares, with any rows missing that leave enough of them.
  const VectorXd step = Eigen::Vector2d(0.1, 0.2), centre = Eigen::Vector2d(1.0, 2.0);
  const VectorXd lower = Eigen::Vector2d(-9, -9), upper = Eigen::Vector2d(9, 9);
  for (const NumericalDifferences type : {kCentral, kForward, kBackward}) {
    const MatrixXd designs = Stencil(type, step, lower, upper).Designs(centre, true);
    const MatrixXd plane = (designs * Eigen::Vector2d(3.0, -4.0)).array() + 7.0;
    std::vector<bool> success(static_cast<std::size_t>(designs.rows()), true);
    const auto gradients = [&] { return PlaneGradients(type, designs, plane, success, step); };
    EXPECT_LT((gradients() - Eigen::RowVector2d(3, -4)).norm(), 1e-12);
    success[1] = false;
    // Forward and backward have nothing left that varies along the first input.
    EXPECT_LT((gradients() - Eigen::RowVector2d(type == kCentral ? 3 : 0, -4)).norm(), 1e-12);
  }
  // Two inputs that vary together do not tell their slopes apart.
  const MatrixXd line{{0, 0}, {0.1, 0.1}, {0.2, 0.2}};
  EXPECT_MESSAGE("Calculation error in NLPQLP: Regression matrix is singular.",
                 PlaneGradients(kForward, line, line.col(0), {true, true, true}, step));
  // An input that varies by a millionth of the largest step has no slope.
  const MatrixXd thin{{0, 0}, {1e-7, 0.5}, {0, 1}};
  const Eigen::Vector2d thin_step(1e-7, 1.0);
  EXPECT_EQ(PlaneGradients(kForward, thin, thin.rowwise().sum(), {true, true, true}, thin_step)(0),
            0.0);

  // Five points differentiate a quartic exactly; with some missing, one-sided quotients average:
  // for x^2 at 1 these are 2 + k h with k = -2, -1, 1, 2.
  const double h = 0.25;
  const Eigen::Vector4d x(1.0 - 2.0 * h, 1.0 - h, 1.0 + h, 1.0 + 2.0 * h);
  const VectorXd quartic = x.array().pow(4) - 2.0 * x.array().cube() + x.array();
  const VectorXd one_step = VectorXd::Constant(1, h), square = x.cwiseAbs2();
  VectorXd gradient;
  ASSERT_TRUE(FivePointGradient(quartic, {true, true, true, true}, 0.0, one_step, true, gradient));
  EXPECT_NEAR(gradient(0), 4.0 - 6.0 + 1.0, 1e-13);
  const std::pair<std::vector<bool>, double> some[] = {{{false, true, true, true}, 2.0 / 3.0},
                                                       {{true, true, true, false}, -2.0 / 3.0},
                                                       {{false, true, true, false}, 0.0},
                                                       {{true, false, false, false}, -2.0},
                                                       {{false, false, false, true}, 2.0}};
  for (const auto& [success, k] : some)
    for (const bool is_counted : {true, false}) {  // where not, whatever the rows hold
      ASSERT_TRUE(FivePointGradient(square, success, 1.0, one_step, is_counted, gradient));
      EXPECT_NEAR(gradient(0), 2.0 + (is_counted ? k * h : 0.0), 1e-14);
    }
  EXPECT_FALSE(
      FivePointGradient(square, {false, false, false, false}, 1.0, one_step, true, gradient));
}

}  // namespace
