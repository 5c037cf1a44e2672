#include "optimizer/optimizer_nlpqlp.h"

#include "foundation/exception.h"
#include "optimizer/gradient_estimate.h"
#include "optimizer/hock_schittkowski.h"
#include "optimizer/stencil.h"
#include "support/message_of.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <functional>
#include <typeinfo>

using corvath::algorithm::optimizer::FivePointGradient;
using corvath::algorithm::optimizer::NumericalDifferences;
using corvath::algorithm::optimizer::PlaneGradients;
using corvath::algorithm::optimizer::Stencil;
using Optimizer = corvath::algorithm::optimizer::OptimizerNLPQLP<double>;
using Settings = corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>;

namespace {

constexpr NumericalDifferences kTypes[] = {
    NumericalDifferences::kCentral, NumericalDifferences::kForward, NumericalDifferences::kBackward,
    NumericalDifferences::kFivePoint};

/// A collected problem as a client of the design loop sees it. A problem without bounds gets wide
/// ones; the step of the differences is 1e-5.
class Client {
 public:
  explicit Client(int number) : problem_(Find(number)) {}

  Settings MakeSettings(NumericalDifferences type) const {
    const int n = problem_.NumVariables();
    Settings settings(static_cast<std::uint64_t>(n), 1,
                      static_cast<std::uint64_t>(problem_.num_equalities),
                      static_cast<std::uint64_t>(problem_.num_inequalities));
    Eigen::VectorXd lower(n), upper(n), start(n);
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

  /// Whether the evaluation of a design succeeds; its responses are NaN where it does not.
  std::function<bool(const Eigen::RowVectorXd& design)> succeeds = [](const auto&) { return true; };

  /// Called before each Appraise with the responses of the round: may hand others in.
  std::function<void(Optimizer& optimizer, const Eigen::MatrixXd& f, const Eigen::MatrixXd& h,
                     const Eigen::MatrixXd& g)>
      before_appraisal = [](auto&, const auto&, const auto&, const auto&) {};

  /// The loop to its end. The sizes of its rounds are recorded.
  void Run(Optimizer& optimizer) {
    rounds.clear();
    do {
      const Eigen::MatrixXd designs = optimizer.GetNextDesigns();
      rounds.push_back(designs.rows());
      Eigen::MatrixXd f(designs.rows(), 1), h(designs.rows(), problem_.num_equalities),
          g(designs.rows(), problem_.num_inequalities);
      std::vector<bool> success;
      for (Eigen::Index row = 0; row < designs.rows(); ++row) {
        support::Dual x[11], values[11];
        for (Eigen::Index i = 0; i < designs.cols(); ++i) x[i + 1].value = designs(row, i);
        success.push_back(succeeds(designs.row(row)));
        const double spoil = success.back() ? 0.0 : std::nan("");
        f(row, 0) = problem_.evaluate(x, values).value + spoil;
        for (Eigen::Index j = 0; j < h.cols(); ++j) h(row, j) = values[j + 1].value + spoil;
        for (Eigen::Index j = 0; j < g.cols(); ++j)
          g(row, j) = values[h.cols() + j + 1].value + spoil;
      }
      optimizer.SetInputs(designs);
      optimizer.SetCriteriaSuccessInfo(success);
      optimizer.SetObjectives(f);
      if (h.cols() > 0) optimizer.SetEqualities(h);
      if (g.cols() > 0) optimizer.SetInequalities(g);
      before_appraisal(optimizer, f, h, g);
      optimizer.Appraise();
      optimizer.Adapt();
    } while (!optimizer.IsTerminated());
    optimizer.Finalize();
  }

  double Optimum() const { return problem_.optimum; }
  std::vector<Eigen::Index> rounds;

 private:
  static const support::CollectedProblem& Find(int number) {
    for (const auto& problem : support::HockSchittkowski())
      if (problem.number == number) return problem;
    throw std::logic_error("no such problem");
  }
  const support::CollectedProblem& problem_;
};

TEST(OptimizerNLPQLP, SolvesThroughTheDesignLoopWithEveryTypeOfDifferences) {
  for (const NumericalDifferences type : kTypes)
    for (const int number : {5, 12, 14, 35, 43, 71, 76, 100}) {
      Client client(number);
      Optimizer optimizer;
      optimizer.Initialize(client.MakeSettings(type));
      client.Run(optimizer);
      SCOPED_TRACE(std::to_string(number) + ", type " + std::to_string(static_cast<int>(type)));
      EXPECT_TRUE(optimizer.IsConverged()) << optimizer.GetFailure();
      // One-sided differences are good to the step times the curvature.
      EXPECT_NEAR(optimizer.GetBestObjectives()(0, 0), client.Optimum(),
                  1e-4 * std::max(1.0, std::abs(client.Optimum())));
      if (optimizer.GetBestInequalities().cols() > 0) {
        EXPECT_GE(optimizer.GetBestInequalities().minCoeff(), -1e-5);
      }
      if (optimizer.GetBestEqualities().cols() > 0) {
        EXPECT_LE(optimizer.GetBestEqualities().cwiseAbs().maxCoeff(), 1e-5);
      }
      EXPECT_EQ(optimizer.GetBestIndex(), std::vector<std::uint64_t>{optimizer.GetNumAppraised()});
    }
}

TEST(OptimizerNLPQLP, AsksForStencilsAndRoundsOfTheirSizes) {
  const Eigen::Index first[] = {2 * 4 + 1, 4 + 1, 4 + 1, 4 * 4 + 1};
  const Eigen::Index later[] = {2 * 4, 4 + 1, 4 + 1, 4 * 4};
  for (const NumericalDifferences type : kTypes)
    for (const std::uint64_t num_parallel : {1u, 3u}) {
      Client client(43);
      Settings settings = client.MakeSettings(type);
      settings.SetNumberParallel(num_parallel);
      settings.SetMinStepsize(num_parallel > 1 ? 1e-3 : 0.0);
      Optimizer optimizer;
      optimizer.Initialize(settings);
      client.Run(optimizer);
      const auto k = static_cast<std::size_t>(type);
      ASSERT_GE(client.rounds.size(), 4u);
      EXPECT_EQ(client.rounds[0], 0);
      EXPECT_EQ(client.rounds[1], first[k]);
      EXPECT_EQ(client.rounds[2], static_cast<Eigen::Index>(num_parallel));
      for (std::size_t i = 2; i < client.rounds.size(); ++i)
        EXPECT_TRUE(client.rounds[i] == later[k] ||
                    client.rounds[i] == static_cast<Eigen::Index>(num_parallel));
      EXPECT_TRUE(optimizer.IsConverged());
      EXPECT_NEAR(optimizer.GetBestObjectives()(0, 0), -44.0, 1e-2);
    }
}

TEST(OptimizerNLPQLP, BacksAwayFromDesignsThatFail) {
  for (const NumericalDifferences type : kTypes) {
    // Everything with x1 + x2 above 2.5 fails; the optimum of 12 lies at (2, 3), so that the method
    // presses against the edge and must not be trapped in an exception.
    Client client(12);
    client.succeeds = [](const Eigen::RowVectorXd& x) { return x.sum() <= 2.5; };
    Optimizer optimizer;
    Settings settings = client.MakeSettings(type);
    settings.SetMaxNumFunctionCalls(500);
    optimizer.Initialize(settings);
    client.Run(optimizer);
    ASSERT_EQ(optimizer.GetBestInputs().rows(), 1);
    EXPECT_LE(optimizer.GetBestInputs().sum(), 2.5);
    EXPECT_LT(optimizer.GetBestObjectives()(0, 0), -10.0);  // f is 0 at the start
  }
}

TEST(OptimizerNLPQLP, EndsWithoutConvergenceWhereTheStartFails) {
  for (const NumericalDifferences type : kTypes) {
    Client client(12);
    int count = 0;
    client.succeeds = [&](const Eigen::RowVectorXd&) { return ++count == 1; };  // the start alone
    Optimizer optimizer;
    optimizer.Initialize(client.MakeSettings(type));
    client.Run(optimizer);
    EXPECT_EQ(optimizer.GetFailure(), 1001);
    count = 1;  // none at all
    optimizer.Initialize(client.MakeSettings(type));
    client.Run(optimizer);
    EXPECT_EQ(optimizer.GetFailure(), 1001);
    EXPECT_FALSE(optimizer.IsConverged());
    EXPECT_EQ(optimizer.GetBestInputs().rows(), 0);
    EXPECT_EQ(optimizer.GetBestInequalities().cols(), 1);
    EXPECT_EQ(
        support::MessageOfExactly<corvath::utils::runtime_error>([&] { optimizer.GetBestIndex(); }),
        "NLPQLP can only provide the index of the best design during the iteration, if it is "
        "converged.");
  }
  // All designs of the second gradient fail: the iterate that asked for it is kept.
  Client client(43);
  client.succeeds = [&](const Eigen::RowVectorXd&) {
    return client.rounds.size() <= 2 || client.rounds.back() == 1;
  };
  Optimizer optimizer;
  optimizer.Initialize(client.MakeSettings(NumericalDifferences::kForward));
  client.Run(optimizer);
  EXPECT_EQ(optimizer.GetFailure(), 1002);
  EXPECT_EQ(optimizer.GetBestInputs().rows(), 1);
}

TEST(OptimizerNLPQLP, KeepsItsBudgetAtTheEndsOfRounds) {
  for (const std::uint64_t budget : {1u, 6u, 20u, 60u}) {
    Client client(100);
    Settings settings = client.MakeSettings(NumericalDifferences::kForward);
    settings.SetMaxNumFunctionCalls(budget);
    Optimizer optimizer;
    optimizer.Initialize(settings);
    client.Run(optimizer);
    EXPECT_FALSE(optimizer.IsConverged());
    EXPECT_GE(optimizer.GetNumAppraised(), budget);
    EXPECT_LT(optimizer.GetNumAppraised(), budget + 8);  // at most one round more
  }
}

TEST(OptimizerNLPQLP, RefusesNaNInEveryRoundAndGoesOnWithNumbers) {
  // Problem 71 has an equality and an inequality. In each round every response is a NaN once.
  Client client(71);
  Optimizer untroubled, optimizer;
  const Settings settings = client.MakeSettings(NumericalDifferences::kCentral);
  untroubled.Initialize(settings);
  client.Run(untroubled);
  const std::vector<Eigen::Index> rounds = client.rounds;
  int num_refusals = 0;
  client.before_appraisal = [&](Optimizer& one, const Eigen::MatrixXd& f, const Eigen::MatrixXd& h,
                                const Eigen::MatrixXd& g) {
    if (f.rows() == 0) return;
    const auto spoiled = [](Eigen::MatrixXd values) {
      values(values.rows() - 1, 0) = std::nan("");
      return values;
    };
    const auto refuses = [&] {
      ++num_refusals;
      EXPECT_EQ(
          support::MessageOfExactly<corvath::utils::runtime_error>([&] { one.Appraise(); }),
          "The algorithm obtained responses from the solver which contain numbers being NaN.");
    };
    one.SetObjectives(spoiled(f));
    refuses();
    one.SetObjectives(f);
    one.SetEqualities(spoiled(h));
    refuses();
    one.SetEqualities(h);
    one.SetInequalities(spoiled(g));
    refuses();
    one.SetInequalities(g);
  };
  optimizer.Initialize(settings);
  client.Run(optimizer);
  EXPECT_EQ(num_refusals, 3 * (static_cast<int>(rounds.size()) - 1));
  EXPECT_EQ(client.rounds, rounds);
  EXPECT_EQ(optimizer.GetNumAppraised(), untroubled.GetNumAppraised());
  EXPECT_TRUE(optimizer.IsConverged());
  EXPECT_EQ(optimizer.GetBestInputs(), untroubled.GetBestInputs());
}

TEST(OptimizerNLPQLP, StartsOnItsBounds) {
  // Problem 76 is a convex quadratic program: every start must lead to its optimum, up to the error
  // of differences whose base point moved inside by a step of 1e-5.
  for (const NumericalDifferences type : kTypes)
    for (const double share : {0.0, 1.0}) {  // all inputs on their lower, on their upper bounds
      Client client(76);
      Settings settings = client.MakeSettings(type);
      settings.SetUpperBounds(Eigen::VectorXd::Constant(4, 3.0));
      settings.SetStartDesigns(
          ((1.0 - share) * settings.GetLowerBounds() + share * settings.GetUpperBounds())
              .transpose());
      bool all_inside = true;
      client.succeeds = [&](const Eigen::RowVectorXd& x) {
        all_inside = all_inside && x.minCoeff() >= 0.0 && x.maxCoeff() <= 3.0;
        return true;
      };
      Optimizer optimizer;
      optimizer.Initialize(settings);
      client.Run(optimizer);
      SCOPED_TRACE(std::to_string(static_cast<int>(type)) + " from " + std::to_string(share));
      EXPECT_TRUE(optimizer.IsConverged()) << optimizer.GetFailure();
      EXPECT_TRUE(all_inside);
      EXPECT_NEAR(optimizer.GetBestObjectives()(0, 0), client.Optimum(), 1e-3);
    }
}

TEST(OptimizerNLPQLP, EndsWhereEveryTrialFails) {
  for (const std::uint64_t num_parallel : {1u, 4u}) {
    Client client(43);
    client.succeeds = [&](const Eigen::RowVectorXd&) { return client.rounds.size() <= 2; };
    Settings settings = client.MakeSettings(NumericalDifferences::kCentral);
    settings.SetNumberParallel(num_parallel);
    Optimizer optimizer;
    optimizer.Initialize(settings);
    client.Run(optimizer);
    EXPECT_EQ(optimizer.GetFailure(), 4);  // of the line search
    EXPECT_FALSE(optimizer.IsConverged());
    EXPECT_EQ(optimizer.GetBestInputs().rows(), 0);  // no iterate but the start
  }
}

TEST(OptimizerNLPQLP, MayBeTerminatedByItsClient) {
  Client client(43);
  client.before_appraisal = [&](Optimizer& one, const auto&, const auto&, const auto&) {
    if (client.rounds.size() == 6) one.Terminate();
  };
  Optimizer optimizer;
  optimizer.Initialize(client.MakeSettings(NumericalDifferences::kForward));
  EXPECT_EQ(
      support::MessageOfExactly<corvath::utils::runtime_error>([&] { client.Run(optimizer); }),
      "Appraise requires GetNextDesigns before.");
  EXPECT_TRUE(optimizer.IsTerminated());
  optimizer.Finalize();
  EXPECT_FALSE(optimizer.IsConverged());
  EXPECT_EQ(optimizer.GetBestInputs().rows(), 1);
}

TEST(OptimizerNLPQLP, LimitsItsFirstStep) {
  // From (-2, 1) the slopes of problem 2 are in the thousands; the first trial must be 0.05 away.
  Client client(2);
  Settings settings = client.MakeSettings(NumericalDifferences::kCentral);
  settings.SetUseInitialStepsizeLimit(true);
  settings.SetMaxStepsize(0.05);
  Optimizer optimizer;
  optimizer.Initialize(settings);
  Eigen::MatrixXd first_trial;
  client.succeeds = [&](const Eigen::RowVectorXd& x) {
    if (client.rounds.size() == 3 && first_trial.size() == 0) first_trial = x;
    return true;
  };
  client.Run(optimizer);
  ASSERT_EQ(first_trial.size(), 2);
  const Eigen::RowVectorXd start = settings.GetStartDesigns().row(0);
  EXPECT_NEAR(std::abs(first_trial(0) - start(0)), 0.05, 1e-6);
  EXPECT_TRUE(optimizer.IsConverged());
}

TEST(OptimizerNLPQLP, StartsAgainRefusesOtherSettingsAndWarnsOfDisplacedDesigns) {
  Client client(35);
  Optimizer optimizer;
  const auto log = boost::make_shared<corvath::utils::log::VectorLog>();
  optimizer.SetLogger(log);
  const Settings settings = client.MakeSettings(NumericalDifferences::kCentral);
  optimizer.Initialize(settings);
  client.Run(optimizer);
  const std::vector<Eigen::Index> rounds = client.rounds;
  optimizer.Initialize(settings);
  client.Run(optimizer);
  EXPECT_EQ(client.rounds, rounds);
  EXPECT_TRUE(log->GetLines().empty());
  EXPECT_THROW(
      optimizer.Initialize(corvath::algorithm::optimizer::OptimizerSettingsGradientBase<double>(3)),
      std::bad_cast);

  // A client that rounds its designs to two digits moves them by more than half a step of 1e-5.
  optimizer.Initialize(settings);
  for (int round = 0; round < 8 && !optimizer.IsTerminated(); ++round) {
    Eigen::MatrixXd designs = optimizer.GetNextDesigns();
    const Eigen::Index n = designs.rows();
    if (round > 1) designs = (100.0 * designs).array().round() / 100.0;
    optimizer.SetInputs(designs);
    optimizer.SetCriteriaSuccessInfo(std::vector<bool>(static_cast<std::size_t>(n), true));
    optimizer.SetObjectives(designs.rowwise().squaredNorm());
    optimizer.SetInequalities(Eigen::VectorXd::Ones(n));
    optimizer.Appraise();
    optimizer.Adapt();
  }
  ASSERT_FALSE(log->GetLines().empty());
  EXPECT_EQ(log->GetLines()[0].second.substr(0, 48),
            L"NLPQLP: Check the format of design point variabl");
}

TEST(Stencil, StaysWithinTheBounds) {
  const Eigen::VectorXd step = Eigen::VectorXd::Constant(1, 0.1);
  const Eigen::VectorXd lower = Eigen::VectorXd::Constant(1, 0.0);
  const Eigen::VectorXd upper = Eigen::VectorXd::Constant(1, 1.0);
  struct Case {
    NumericalDifferences type;
    double centre;
    std::vector<double> designs;  ///< the base first where the type evaluates it
  };
  const Case cases[] = {
      {NumericalDifferences::kForward, 0.5, {0.5, 0.6}},
      {NumericalDifferences::kForward, 1.0, {0.9, 1.0}},  // the base moves inside
      {NumericalDifferences::kForward, -0.2, {0.1, 0.0}},
      {NumericalDifferences::kBackward, 0.5, {0.5, 0.4}},
      {NumericalDifferences::kBackward, 0.0, {0.1, 0.0}},
      {NumericalDifferences::kBackward, 1.2, {0.9, 0.8}},
      {NumericalDifferences::kCentral, 0.5, {0.4, 0.6}},
      {NumericalDifferences::kCentral, 0.05, {0.0, 0.2}},
      {NumericalDifferences::kCentral, 0.95, {0.8, 1.0}},
      {NumericalDifferences::kFivePoint, 0.5, {0.3, 0.4, 0.6, 0.7}},
      {NumericalDifferences::kFivePoint, 0.1, {0.0, 0.1, 0.3, 0.4}},
      {NumericalDifferences::kFivePoint, 0.9, {0.6, 0.7, 0.9, 1.0}},
  };
  for (const Case& one : cases) {
    const Stencil stencil(one.type, step, lower, upper);
    const Eigen::MatrixXd designs =
        stencil.Designs(Eigen::VectorXd::Constant(1, one.centre), false);
    ASSERT_EQ(designs.rows(), static_cast<Eigen::Index>(one.designs.size()));
    for (Eigen::Index k = 0; k < designs.rows(); ++k)
      EXPECT_NEAR(designs(k, 0), one.designs[static_cast<std::size_t>(k)], 1e-15)
          << static_cast<int>(one.type) << " at " << one.centre;
    EXPECT_TRUE(stencil.Fits(designs, false));
    Eigen::MatrixXd moved = designs;
    moved(moved.rows() - 1, 0) += one.type == NumericalDifferences::kCentral ? 0.11 : 0.06;
    EXPECT_FALSE(stencil.Fits(moved, false));
  }
  EXPECT_EQ(support::MessageOf([&] {
              Stencil(static_cast<NumericalDifferences>(9), step, lower, upper).Size(true);
            }),
            "Programming error in NLPQLP: Numerical Differences Type does not fit.");
}

TEST(GradientEstimate, IsExactForWhatItsTypeCanCarry) {
  // A plane by least squares, with any rows missing that leave enough of them.
  const Eigen::VectorXd step = Eigen::Vector2d(0.1, 0.2);
  const Eigen::VectorXd lower = Eigen::Vector2d(-9, -9), upper = Eigen::Vector2d(9, 9);
  const Eigen::VectorXd centre = Eigen::Vector2d(1.0, 2.0);
  for (const NumericalDifferences type :
       {NumericalDifferences::kCentral, NumericalDifferences::kForward,
        NumericalDifferences::kBackward}) {
    const Eigen::MatrixXd designs = Stencil(type, step, lower, upper).Designs(centre, true);
    const Eigen::MatrixXd plane = (designs * Eigen::Vector2d(3.0, -4.0)).array() + 7.0;
    std::vector<bool> success(static_cast<std::size_t>(designs.rows()), true);
    EXPECT_LT(
        (PlaneGradients(type, designs, plane, success, step) - Eigen::RowVector2d(3, -4)).norm(),
        1e-12);
    success[1] = false;
    const Eigen::MatrixXd fewer = PlaneGradients(type, designs, plane, success, step);
    // Forward and backward have nothing left that varies along the first input.
    EXPECT_NEAR(fewer(0, 0), type == NumericalDifferences::kCentral ? 3.0 : 0.0, 1e-12);
    EXPECT_NEAR(fewer(0, 1), -4.0, 1e-12);
  }
  // Two inputs that vary together do not tell their slopes apart.
  const Eigen::MatrixXd line{{0, 0}, {0.1, 0.1}, {0.2, 0.2}};
  EXPECT_EQ(
      support::MessageOf([&] {
        PlaneGradients(NumericalDifferences::kForward, line, line.col(0), {true, true, true}, step);
      }),
      "Calculation error in NLPQLP: Regression matrix is singular.");

  // Five points differentiate a quartic exactly; with some missing, one-sided quotients average.
  const auto quartic = [](double x) { return x * x * x * x - 2.0 * x * x * x + x; };
  const double h = 0.25;
  const Eigen::VectorXd f = Eigen::Vector4d(quartic(1.0 - 2.0 * h), quartic(1.0 - h),
                                            quartic(1.0 + h), quartic(1.0 + 2.0 * h));
  const Eigen::VectorXd one_step = Eigen::VectorXd::Constant(1, h);
  Eigen::VectorXd gradient;
  ASSERT_TRUE(
      FivePointGradient(f, {true, true, true, true}, quartic(1.0), one_step, true, gradient));
  EXPECT_NEAR(gradient(0), 4.0 - 6.0 + 1.0, 1e-13);
  ASSERT_TRUE(
      FivePointGradient(f, {false, true, true, false}, quartic(1.0), one_step, true, gradient));
  EXPECT_NEAR(gradient(0), (f(2) - f(1)) / (2.0 * h), 1e-13);
  EXPECT_FALSE(
      FivePointGradient(f, {false, false, false, false}, quartic(1.0), one_step, true, gradient));
}

}  // namespace
