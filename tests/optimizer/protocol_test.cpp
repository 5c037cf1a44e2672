#include "foundation/exception.h"
#include "optimizer/optimizer_base.h"
#include "optimizer/settings_gradient.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>

using namespace corvath::algorithm::optimizer;
using Eigen::MatrixXd, Eigen::Vector2d;

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
    Count(num_appraisals);
    if (terminates) Terminate();
  }
  void AdaptStep() override { Count(num_adaptions); }
  void FinalizeStep() override { Count(num_ends); }
  void OnSetInputs(const Matrix& designs) override {
    int ignored = 0;
    Count(ignored);
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
    SetObjectives(Vector2d(1, 2));
    SetEqualities(Vector2d(3, 4));
    SetInequalities(Vector2d(5, 6));
  }

  bool done = false, fails = false, terminates = false;
  int num_appraisals = 0, num_adaptions = 0, num_ends = 0;

 private:
  void Count(int& number) const {
    if (fails) throw std::domain_error("no answer");
    ++number;
  }
};

using State = Recorder::State;

using Action = void (*)(Recorder&);

/// Expects that `action` is refused with a text that holds `part`, and that the state stays.
void ExpectRefusal(Recorder& one, const std::string& part, Action action) {
  const State before = one.GetState();
  const std::string text =
      support::MessageOfExactly<corvath::utils::runtime_error>([&] { action(one); });
  EXPECT_NE(text.find(part), std::string::npos) << text << "\nfor " << part;
  EXPECT_EQ(one.GetState(), before);
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
  optimizer.SetObjectives(Vector2d(1.0, std::nan("")));  // a failed design may hold anything
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

  Recorder ended_inside, done_late;
  ended_inside.terminates = true;
  ended_inside.PlayRound();
  ended_inside.Appraise();
  EXPECT_EQ(ended_inside.GetState(), State::kTerminated);
  done_late.PlayRound();
  done_late.Appraise();
  done_late.done = true;
  done_late.Appraise();
  EXPECT_EQ(done_late.GetState(), State::kTerminated);
}

TEST(OptimizerProtocol, RefusesStepsOutOfOrderAndResultsOfAnotherShape) {
  using R = Recorder;
  const std::pair<Action, const char*> fresh[] = {
      {[](R& o) { o.SetInputs({}); }, "SetInputs requires GetNextDesigns before. State is: 1"},
      {[](R& o) { o.SetCriteriaSuccessInfo({}); }, "SetCriteriaSuccessInfo requires"},
      {[](R& o) { o.SetObjectives({}); }, "SetObjectives requires GetNextDesigns"},
      {[](R& o) { o.SetEqualities({}); }, "SetEqualities requires GetNextDesigns"},
      {[](R& o) { o.SetInequalities({}); }, "SetInequalities requires GetNextDesigns"},
      {[](R& o) { o.Appraise(); }, "Appraise requires GetNextDesigns before."},
      {[](R& o) { o.Adapt(); }, "Adapt requires Appraise before."},
      {[](R& o) { o.Finalize(); }, "after terminating the algorithm loop  (in optimizer)."},
      {[](R& o) { o.SetAwaitingDesigns(MatrixXd(1, 3)); }, "designs to be waiting for (3) must be"},
  };
  const std::pair<Action, const char*> out[] = {
      {[](R& o) { o.SetInputs(MatrixXd(2, 3)); }, "space ( 3) does not fit (should be 2)."},
      {[](R& o) { o.SetInputs(MatrixXd(1, 2)); }, "obtained designs ( 1) is not equal to"},
      {[](R& o) { o.SetCriteriaSuccessInfo({true}); }, "success infos (1) is not equal to"},
      {[](R& o) { o.SetObjectives(MatrixXd(2, 3)); }, "functions (3) does not fit (expected 1)."},
      {[](R& o) { o.SetObjectives(MatrixXd(3, 1)); }, "objective function sets (3) is not equal"},
      {[](R& o) { o.SetEqualities(MatrixXd(2, 3)); }, "d equality constraint functions (3) does"},
      {[](R& o) { o.SetEqualities(MatrixXd(3, 1)); }, "d equality constraint function sets (3)"},
      {[](R& o) { o.SetInequalities(MatrixXd(2, 3)); }, "inequality constraint functions (3) does"},
      {[](R& o) { o.SetInequalities(MatrixXd(3, 1)); }, "inequality constraint function sets (3)"},
  };
  Recorder one;
  for (const auto& [action, text] : fresh) ExpectRefusal(one, text, action);
  one.GetNextDesigns();
  for (const auto& [action, text] : out) ExpectRefusal(one, text, action);
  one.PlayRound();
  one.Appraise();
  ExpectRefusal(one, "Initialize or Adapt before.", [](R& o) { o.GetNextDesigns(); });

  // One result after the other is missing, as none is left from the round before.
  one.Adapt();
  one.GetNextDesigns();
  const std::pair<Action, const char*> missing[] = {
      {[](R& o) { o.SetInputs(o.GetNextDesigns()); }, "designs (0) must be equal to the number"},
      {[](R& o) { o.SetCriteriaSuccessInfo(std::vector<bool>(2, true)); },
       "number of exppected designs (2)."},
      {[](R& o) { o.SetObjectives(Vector2d(1, 2)); }, "obtained objective function values (0)"},
      {[](R& o) { o.SetEqualities(Vector2d(1, 2)); }, "d equality constraint function values (0)"},
      {[](R& o) { o.SetInequalities(Vector2d(1, 2)); }, "inequality constraint function value"},
  };
  for (const auto& [set, text] : missing) {
    ExpectRefusal(one, text, [](R& o) { o.Appraise(); });
    set(one);
  }
  one.Appraise();
}

TEST(OptimizerProtocol, RefusesNumbersThatAreNotFinite) {
  const double nan = std::nan(""), inf = HUGE_VAL;
  Recorder one;
  const auto log = boost::make_shared<corvath::utils::log::VectorLog>();
  one.SetLogger(log);
  one.PlayRound();
  const auto expect = [&](const std::string& text) {
    ExpectRefusal(one, text + ".", [](Recorder& o) { o.Appraise(); });
    one.PlayRound();
  };
  for (const auto& [wrong, kind] : {std::pair(inf, "INF"), std::pair(nan, "NaN")}) {
    one.SetInputs(MatrixXd{{1.0, 0.0}, {wrong, 1.0}});
    expect("points which contain numbers being " + std::string(kind) + ". Check design number #1");
    one.SetEqualities(Vector2d(wrong, 1.0));
    expect("responses from the solver which contain numbers being " + std::string(kind));
  }
  one.SetObjectives(Vector2d(nan, 1.0));
  one.SetInequalities(Vector2d(1.0, -inf));
  expect("numbers being INF");
  const wchar_t* const lines[] = {
      L"An equality constraint function value of design #0(with numbers 0 .. 1) is INF.",
      L"An equality constraint function value of design #0(with numbers 0 .. 1) is NaN.",
      L"The objective function value of design #0(with numbers 0 .. 1) is NaN.",
      L"An inequality constraint function value of design #1(with numbers 0 .. 1) is INF."};
  ASSERT_EQ(log->GetLines().size(), 4u);
  for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(log->GetLines()[k].second, lines[k]);
}

TEST(OptimizerProtocol, SaysWhichStepOfTheAlgorithmFailed) {
  using R = Recorder;
  const std::pair<Action, const char*> steps[] = {
      {[](R& o) { o.Appraise(); }, "not appraise the current data and prepare the next iteration"},
      {[](R& o) { o.Adapt(); }, "not adapt the next iterate and prepare the next design points"},
      {[](R& o) { o.SetInputs(o.GetNextDesigns()); }, "set the design point vectors where the"},
      {[](R& o) { o.Finalize(); }, "not finalize the iteration. no answer"},
  };
  Recorder one;
  one.PlayRound();
  for (const auto& [step, text] : steps) {
    if (one.GetState() == State::kAdapted) one.GetNextDesigns();
    if (std::string(text).find("finalize") != std::string::npos) one.Terminate();
    one.fails = true;
    ExpectRefusal(one, std::string("The optimizer algorithm can ") + text, step);
    one.fails = false;
    step(one);
  }
}

}  // namespace
