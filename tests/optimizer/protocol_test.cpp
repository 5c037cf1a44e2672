#include "foundation/exception.h"
#include "optimizer/optimizer_base.h"
#include "optimizer/settings_gradient.h"
#include "support/message_of.h"

#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

using corvath::algorithm::optimizer::OptimizerBase;
using corvath::algorithm::optimizer::OptimizerSettingsBase;
using corvath::algorithm::optimizer::OptimizerSettingsGradientBase;

namespace {

/// Asks for the same two designs of two inputs in every round; one objective, one equality, one
/// inequality.
class Recorder : public OptimizerBase<double> {
 public:
  Recorder() { Initialize(OptimizerSettingsGradientBase<double>(2, 1, 1, 1)); }
  void Initialize(const OptimizerSettingsBase<double>& settings) override {
    Restart(settings);
    SetAwaitingDesigns(Eigen::Matrix2d::Identity());
    state_ = State::kInitialized;
  }
  void AppraiseStep() override {
    ++num_appraisals;
    if (fails) throw std::domain_error("no answer");
    if (terminates) Terminate();
  }
  void AdaptStep() override {
    ++num_adaptions;
    if (fails) throw std::domain_error("no answer");
  }
  void FinalizeStep() override {
    if (fails) throw std::domain_error("no answer");
    ++num_ends;
  }
  void OnSetInputs(const Matrix& designs) override {
    if (fails) throw std::domain_error("no answer");
    OptimizerBase<double>::OnSetInputs(designs);
  }
  bool IsDone() const override { return done; }
  bool IsConverged() const override { return false; }
  Matrix GetBestInputs() const override { return {}; }
  Matrix GetBestObjectives() const override { return {}; }
  Matrix GetBestEqualities() const override { return {}; }
  Matrix GetBestInequalities() const override { return {}; }
  std::vector<std::uint64_t> GetBestIndex() const override { return {}; }
  Recorder* Clone() const override { return new Recorder(*this); }
  using OptimizerBase<double>::SetAwaitingDesigns;

  /// Hands out the designs and takes results for them.
  void PlayRound() {
    SetInputs(GetNextDesigns());
    SetCriteriaSuccessInfo({true, true});
    SetObjectives(Eigen::Vector2d(1, 2));
    SetEqualities(Eigen::Vector2d(3, 4));
    SetInequalities(Eigen::Vector2d(5, 6));
  }

  bool done = false, fails = false, terminates = false;
  int num_appraisals = 0, num_adaptions = 0, num_ends = 0;
};

using State = Recorder::State;

template <class Action>
std::string Refusal(Action&& action) {
  return support::MessageOfExactly<corvath::utils::runtime_error>(action);
}

TEST(OptimizerProtocol, GoesRoundAndEndsOnce) {
  Recorder optimizer;
  EXPECT_EQ(optimizer.GetNextDesigns(), Eigen::Matrix2d::Identity());
  optimizer.PlayRound();  // asks again, which is legal
  optimizer.Appraise();
  optimizer.Appraise();  // repeats without effect
  EXPECT_EQ(optimizer.GetState(), State::kAppraised);
  EXPECT_EQ(optimizer.num_appraisals, 1);
  EXPECT_EQ(optimizer.GetNumAppraised(), 2u);
  optimizer.Adapt();
  optimizer.Adapt();
  EXPECT_EQ(optimizer.num_adaptions, 1);

  optimizer.PlayRound();
  optimizer.SetCriteriaSuccessInfo({true, false});
  optimizer.SetObjectives(Eigen::Vector2d(1.0, std::nan("")));  // a failed design may hold anything
  optimizer.done = true;
  optimizer.Appraise();
  EXPECT_EQ(optimizer.GetState(), State::kTerminated);
  EXPECT_EQ(optimizer.GetNumAppraised(), 4u);
  ASSERT_EQ(optimizer.GetRounds().size(), 2u);
  EXPECT_EQ(optimizer.GetRounds()[1].num_succeeded, 1u);
  optimizer.Adapt();
  EXPECT_TRUE(optimizer.IsTerminated());
  EXPECT_EQ(optimizer.num_adaptions, 1);
  optimizer.Finalize();
  optimizer.Finalize();
  optimizer.Terminate();
  EXPECT_EQ(optimizer.GetState(), State::kFinalized);
  EXPECT_EQ(optimizer.num_ends, 1);

  Recorder ended_inside;
  ended_inside.PlayRound();
  ended_inside.terminates = true;
  ended_inside.Appraise();
  EXPECT_EQ(ended_inside.GetState(), State::kTerminated);
  Recorder done_late;
  done_late.PlayRound();
  done_late.Appraise();
  done_late.done = true;
  done_late.Appraise();
  EXPECT_EQ(done_late.GetState(), State::kTerminated);
}

TEST(OptimizerProtocol, RefusesStepsOutOfOrder) {
  Recorder optimizer;
  EXPECT_EQ(Refusal([&] { optimizer.SetInputs(Eigen::Matrix2d::Zero()); }),
            "SetInputs requires GetNextDesigns before. State is: 1");
  EXPECT_EQ(Refusal([&] { optimizer.SetCriteriaSuccessInfo({true}); }),
            "SetCriteriaSuccessInfo requires GetNextDesigns before. State is: 1");
  EXPECT_EQ(Refusal([&] { optimizer.SetObjectives(Eigen::Vector2d(0, 0)); }),
            "SetObjectives requires GetNextDesigns before. State is: 1");
  EXPECT_EQ(Refusal([&] { optimizer.SetEqualities(Eigen::Vector2d(0, 0)); }),
            "SetEqualities requires GetNextDesigns before. State is: 1");
  EXPECT_EQ(Refusal([&] { optimizer.SetInequalities(Eigen::Vector2d(0, 0)); }),
            "SetInequalities requires GetNextDesigns before. State is: 1");
  EXPECT_EQ(Refusal([&] { optimizer.Appraise(); }), "Appraise requires GetNextDesigns before.");
  EXPECT_EQ(Refusal([&] { optimizer.Adapt(); }), "Adapt requires Appraise before.");
  EXPECT_EQ(Refusal([&] { optimizer.Finalize(); }),
            "Finalize must be called after terminating the algorithm loop  (in optimizer).");
  optimizer.PlayRound();
  optimizer.Appraise();
  EXPECT_EQ(Refusal([&] { optimizer.GetNextDesigns(); }),
            "GetNextDesigns requires Initialize or Adapt before.");
  EXPECT_EQ(Refusal([&] { optimizer.SetAwaitingDesigns(Eigen::MatrixXd(1, 3)); }),
            "Optimizer::SetAwaitingDesigns: The dimension of designs to be waiting for (3) must be "
            "equal to the dimension of design space (2).");
}

TEST(OptimizerProtocol, RefusesResultsOfAnotherShape) {
  Recorder optimizer;
  optimizer.GetNextDesigns();
  EXPECT_EQ(Refusal([&] { optimizer.SetInputs(Eigen::MatrixXd(2, 3)); }),
            "OptimizerBase::SetInputs: The dimension of the obtained design space ( 3) does not "
            "fit (should be 2).");
  EXPECT_EQ(Refusal([&] { optimizer.SetInputs(Eigen::MatrixXd(1, 2)); }),
            "OptimizerBase::SetInputs: The number of the obtained designs ( 1) is not equal to the "
            "number of expected designs (2).");
  EXPECT_EQ(Refusal([&] { optimizer.SetCriteriaSuccessInfo({true}); }),
            "The number of obtained success infos (1) is not equal to the number of expected "
            "designs (2).");
  EXPECT_EQ(Refusal([&] { optimizer.SetObjectives(Eigen::MatrixXd(2, 2)); }),
            "The dimension of obtained objective functions (2) does not fit (expected 1).");
  EXPECT_EQ(Refusal([&] { optimizer.SetObjectives(Eigen::MatrixXd(3, 1)); }),
            "The number of obtained objective function sets (3) is not equal to the number of "
            "expected designs (2).");
  for (const auto set : {&Recorder::SetEqualities, &Recorder::SetInequalities}) {
    const std::string kind = set == &Recorder::SetEqualities ? "equality" : "inequality";
    EXPECT_EQ(Refusal([&] { (optimizer.*set)(Eigen::MatrixXd(2, 2)); }),
              "The dimension of obtained " + kind +
                  " constraint functions (2) does not fit (expected 1).");
    EXPECT_EQ(Refusal([&] { (optimizer.*set)(Eigen::MatrixXd(3, 1)); }),
              "The number of obtained " + kind +
                  " constraint function sets (3) is not equal to the number of expected designs "
                  "(2).");
  }

  // One result after the other is missing, as none is left from the round before.
  optimizer.PlayRound();
  optimizer.Appraise();
  optimizer.Adapt();
  const Eigen::MatrixXd designs = optimizer.GetNextDesigns();
  const auto appraisal = [&] { return Refusal([&] { optimizer.Appraise(); }); };
  EXPECT_EQ(appraisal(),
            "Optimizer::Appraise: The number of obtained designs (0) must be equal to the number "
            "expected designs (2).");
  optimizer.SetInputs(designs);
  EXPECT_EQ(appraisal(),
            "Optimizer::Appraise: The dimension of 'success info' (0) must be equal to the number "
            "of exppected designs (2).");
  optimizer.SetCriteriaSuccessInfo({true, true});
  EXPECT_EQ(appraisal(),
            "Optimizer::Appraise: The number of obtained objective function values (0) must be "
            "equal to the number of expected designs (2).");
  optimizer.SetObjectives(Eigen::Vector2d(1, 2));
  EXPECT_EQ(appraisal(),
            "Optimizer::Appraise: The number of obtained equality constraint function values (0) "
            "must be equal to the number of expected designs (2).");
  optimizer.SetEqualities(Eigen::Vector2d(1, 2));
  EXPECT_EQ(appraisal(),
            "Optimizer::Appraise: The number of obtained inequality constraint function values (0) "
            "must be equal to the number of expected designs (2).");
}

TEST(OptimizerProtocol, RefusesNumbersThatAreNotFinite) {
  const double nan = std::nan(""), inf = HUGE_VAL;
  Recorder optimizer;
  const auto log = boost::make_shared<corvath::utils::log::VectorLog>();
  optimizer.SetLogger(log);
  const auto appraisal = [&] { return Refusal([&] { optimizer.Appraise(); }); };
  optimizer.PlayRound();
  for (const double wrong : {inf, nan}) {
    const std::string kind = std::isnan(wrong) ? "NaN" : "INF";
    Eigen::MatrixXd designs = Eigen::Matrix2d::Identity();
    designs(1, 0) = wrong;
    optimizer.SetInputs(designs);
    EXPECT_EQ(appraisal(),
              "Optimizer::Appraise: The algorithm computed a response at design points which "
              "contain numbers being " +
                  kind + ". Check design number #1.");
    optimizer.PlayRound();
    optimizer.SetEqualities(Eigen::Vector2d(wrong, 1.0));
    EXPECT_EQ(appraisal(),
              "The algorithm obtained responses from the solver which contain numbers being " +
                  kind + ".");
    optimizer.PlayRound();
  }
  optimizer.SetObjectives(Eigen::Vector2d(nan, 1.0));
  optimizer.SetInequalities(Eigen::Vector2d(1.0, -inf));
  EXPECT_EQ(appraisal(),
            "The algorithm obtained responses from the solver which contain numbers being INF.");
  const auto lines = log->GetLines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0].second,
            L"An equality constraint function value of design #0(with numbers 0 .. 1) is INF.");
  EXPECT_EQ(lines[2].second,
            L"The objective function value of design #0(with numbers 0 .. 1) is NaN.");
  EXPECT_EQ(lines[3].second,
            L"An inequality constraint function value of design #1(with numbers 0 .. 1) is INF.");
}

TEST(OptimizerProtocol, SaysWhichStepOfTheAlgorithmFailed) {
  Recorder optimizer;
  optimizer.PlayRound();
  optimizer.fails = true;
  EXPECT_EQ(Refusal([&] { optimizer.Appraise(); }),
            "The optimizer algorithm can not appraise the current data and prepare the next "
            "iteration. no answer");
  optimizer.fails = false;
  optimizer.Appraise();
  optimizer.fails = true;
  EXPECT_EQ(Refusal([&] { optimizer.Adapt(); }),
            "The optimizer algorithm can not adapt the next iterate and prepare the next design "
            "points to be computed. no answer");
  optimizer.fails = false;
  optimizer.Adapt();
  const Eigen::MatrixXd designs = optimizer.GetNextDesigns();
  optimizer.fails = true;
  EXPECT_EQ(Refusal([&] { optimizer.SetInputs(designs); }),
            "The optimizer algorithm can set the design point vectors where the previous designs "
            "were computed by the solver. no answer");
  optimizer.Terminate();
  EXPECT_EQ(Refusal([&] { optimizer.Finalize(); }),
            "The optimizer algorithm can not finalize the iteration. no answer");
  EXPECT_EQ(optimizer.GetState(), State::kTerminated);
}

}  // namespace
