#include "analysis/optimisation/design_task.h"

#include "analysis/function_model.h"
#include "analysis/optimisation/optimum.h"
#include "support/function_study.h"

namespace {

using namespace corvath::analysis;

/// Two inputs, the responses s[0] = x, s[1] = y - x, f = x^2 + y^2, and a limit criterion f <= 9.
std::shared_ptr<FunctionModel> MakeModel(bool with_scatter = false) {
  namespace types = corvath::enums::RandomVariable;
  std::vector<StudyInput> inputs = {support::BoundedInput(L"x", -4.0, 4.0),
                                    support::BoundedInput(L"y", -4.0, 4.0)};
  if (with_scatter) {
    inputs[0].variable = support::RandomInput(L"x", types::NORMAL, {1.0, 0.2}).variable;
    inputs[1].variable = support::RandomInput(L"y", types::NORMAL, {1.0, 0.1}).variable;
  }
  using X = const Eigen::VectorXd&;
  return std::shared_ptr<FunctionModel>(new FunctionModel(support::FunctionStudy(
      inputs,
      {{L"s[0]", [](X x) { return x(0); }},
       {L"s[1]", [](X x) { return x(1) - x(0); }},
       {L"f", [](X x) { return x.squaredNorm(); }},
       {L"inside", [](X x) { return 9.0 - x.squaredNorm(); }, StudyQuantity::Kind::kLimit}})));
}

Optimum Solve(const DesignWishes& wishes, bool with_scatter = false) {
  const DesignTask task(MakeModel(with_scatter), wishes);
  return FindOptimum(task, {});
}

TEST(DesignTask, SolvesWhatTextsSayToTheirClosedForms) {
  const double root = std::sqrt(4.5);
  const std::tuple<DesignWishes, double, Eigen::RowVector2d, std::vector<double>> cases[] = {
      // On the circle of radius 3 towards (1, 1); the objective gains sqrt(2) / (2 * 3) per unit of f.
      {{{{L"x + y", true}}, {}, true, {}, 0.0, {}},
       2.0 * root,
       {root, root},
       {std::sqrt(2.0) / 6.0}},
      // The largest of |x| and |y - x| with y held at 2.5: both 1.25.
      {{{{L"2*max(abs(s)) - 1", false}}, {}, true, {{L"y", {2.5, 2.5}}}, 0.0, {}},
       1.5,
       {1.25, 2.5},
       {0.0}},
      // -max(-a, -b) = min(a, b); a limit in each direction, one with a name.
      {{{{L"min(x, y)", true}}, {L"low: 2*x <= 3", L"f >= 1"}, true, {}, 0.0, {}},
       1.5,
       {1.5, 1.5},
       {}},
      // Each element of the vector is limited.
      {{{{L"y", true}}, {L"s <= 1"}, false, {}, 0.0, {}}, 2.0, {1.0, 2.0}, {2.0}},
  };
  for (const auto& [wishes, objective, x, multipliers] : cases) {
    const Optimum optimum = Solve(wishes);
    EXPECT_EQ(optimum.status, OptimumStatus::kOptimal);
    EXPECT_NEAR(optimum.objectives(0), objective, 1e-6);
    for (const auto& limit : optimum.limits) EXPECT_GE(limit.reserve, 0.0);
    for (std::size_t j = 0; j < multipliers.size(); ++j)
      EXPECT_NEAR(optimum.limits[j].multiplier, multipliers[j], 1e-4);
    const bool leaves_one_free = wishes.objectives[0].text == L"min(x, y)";
    EXPECT_TRUE(leaves_one_free || optimum.design.inputs.isApprox(x, 1e-4))
        << optimum.design.inputs;
  }
}

TEST(DesignTask, TellsTheGainOfNarrowRanges) {
  // (x, y) -> x^2 + y^2 towards the upper ends: 2 x and 2 y for each unit of room, however narrow.
  for (const double width : {1e-2, 1e-5, 1e-8}) {
    const DesignWishes wishes{
        {{L"f", true}}, {}, true, {{L"x", {1.0, 1.0 + width}}, {L"y", {0.5, 1.5}}}, 0.0, {}};
    const Optimum optimum = Solve(wishes);
    EXPECT_EQ(optimum.design.inputs, Eigen::RowVector2d(1.0 + width, 1.5));
    ASSERT_EQ(optimum.bounds.size(), 2U);
    // Rounding of f over differences as narrow as the range.
    EXPECT_NEAR(optimum.bounds[0].multiplier, 2.0 * (1.0 + width), 1e-4);
    EXPECT_NEAR(optimum.bounds[1].multiplier, 3.0, 1e-6);
  }
}

TEST(DesignTask, CountsAFlatOptimumOnce) {
  // The least x leaves y alone.
  const Optimum side = Solve({{{L"x", false}}, {}, false, {}, 0.0, {}});
  EXPECT_EQ(side.num_optima, 1);
  ASSERT_EQ(side.notes.size(), 1U);
  EXPECT_EQ(side.notes[0].substr(0, 60),
            L"The optimum is flat: other designs are as good, with y from ");
  EXPECT_TRUE(Solve({{{L"f", false}}, {}, false, {}, 0.0, {}}).notes.empty());
}

TEST(DesignTask, KeepsLimitsWithTheScatterOfTheInputs) {
  // x + y <= 3 with k standard deviations: sqrt(0.2^2 + 0.1^2) each, so x + y = 3 - 3 * 0.2236.
  DesignWishes wishes{{{L"x + y", true}}, {L"x + y <= 3"}, false, {}, 3.0, {}};
  EXPECT_NEAR(Solve(wishes, true).objectives(0), 3.0 - 3.0 * std::sqrt(0.05), 1e-6);
  // f = x^2 + y^2 around (2, 1): variance sum 4 x^2 s^2 + 2 s^4, mean f + sum s^2.
  const InputScatter scatter(*MakeModel(true), {});
  const auto moments = scatter.Propagate(Eigen::RowVector2d(2.0, 1.0), [](const auto& x) {
    return Eigen::MatrixXd(x.rowwise().squaredNorm());
  });
  EXPECT_NEAR(moments.mean(0), 5.05, 1e-12);
  EXPECT_NEAR(moments.deviation(0), std::sqrt(16.0 * 0.04 + 4.0 * 0.01 + 2.0 * (0.0016 + 0.0001)),
              1e-12);
}

TEST(DesignTask, SaysWhyThereIsNoOptimum) {
  const DesignWishes::Objective f{L"f", false};
  // The least that is missing of f >= 40 within f <= 9: 15.5 of each.
  const Optimum broken = Solve({{f}, {L"f >= 40"}, true, {}, 0.0, {}});
  EXPECT_EQ(broken.status, OptimumStatus::kInfeasible);
  EXPECT_NEAR(broken.limits[static_cast<std::size_t>(broken.worst_limit)].reserve, -15.5, 1e-3);

  const auto nowhere = std::make_shared<FunctionModel>(
      MakeModel()->GetInputs(), MakeModel()->GetQuantities(), [](const ConstPoints& x) {
        return Eigen::MatrixXd::Constant(x.rows(), 4, std::nan("")).eval();
      });
  const DesignTask task(nowhere, {{f}, {}, true, {}, 0.0, {}});
  const Optimum failed = FindOptimum(task, {});
  EXPECT_EQ(failed.status, OptimumStatus::kFailed);
  EXPECT_EQ(failed.notes.at(0).substr(0, 44), L"The objective \"f\" has no value at any of 400");
}

}  // namespace
