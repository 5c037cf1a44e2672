#include "analysis/sensitivity/sensitivity.h"

#include "support/function_study.h"

namespace corvath::analysis {
namespace {

using Eigen::VectorXd;
namespace types = enums::RandomVariable;

constexpr double kPi = 3.14159265358979323846;

/// T. Ishigami, T. Homma, "An importance quantification technique in uncertainty analysis for
/// computer models", ISUMA 1990, pp. 398-403, with a = 7, b = 0.1; beside it what cannot be
/// analysed.
FunctionModel Ishigami() {
  return support::FunctionStudy(
      {support::BoundedInput(L"x1", -kPi, kPi), support::BoundedInput(L"x2", -kPi, kPi),
       support::BoundedInput(L"x3", -kPi, kPi)},
      {{L"f",
        [](const VectorXd& x) {
          return 1e6 + std::sin(x(0)) * (1.0 + 0.1 * std::pow(x(2), 4)) +
                 7.0 * std::pow(std::sin(x(1)), 2);
        }},
       {L"constant", [](const VectorXd&) { return 3.0; }},
       {L"root", [](const VectorXd& x) { return std::sqrt(x(0) + 3.0); }},  // NaN below -3
       {L"none", [](const VectorXd&) { return std::nan(""); }}});
}

InputSpace OverBounds(const StudyModel& model) {
  return InputSpace(model, {InputSpace::Scope::kBounds, {}, {}});
}

TEST(Sensitivity, FindsTheIndicesOfIshigami) {
  const FunctionModel model = Ishigami();
  SensitivitySettings settings;
  settings.num_base = 8192;
  settings.second_order = true;
  const Sensitivity result = AnalyseSensitivity(model, OverBounds(model), settings);
  EXPECT_EQ(result.num_evaluations, 8 * 8192);
  EXPECT_EQ(result.groups[2], std::vector<std::wstring>{L"x3"});
  const QuantitySensitivity& f = result.quantities[0];
  const double b = 0.1;
  const double v1 = 0.5 * std::pow(1.0 + b * std::pow(kPi, 4) / 5.0, 2);
  const double v2 = 49.0 / 8.0;
  const double v13 = b * b * std::pow(kPi, 8) * 8.0 / 225.0;
  const double v = v1 + v2 + v13;
  // Errors of some thousand Sobol points, far below the 1e-2 of independent ones.
  EXPECT_NEAR(f.variance, v, 0.01 * v);
  EXPECT_NEAR(f.mean, 1e6 + 3.5, 0.01);
  EXPECT_LT((f.first.value - Eigen::Vector3d(v1, v2, 0.0) / v).cwiseAbs().maxCoeff(), 5e-3);
  EXPECT_LT((f.total.value - Eigen::Vector3d(v1 + v13, v2, v13) / v).cwiseAbs().maxCoeff(), 5e-3);
  EXPECT_LT((f.second.value - Eigen::Vector3d(0.0, v13, 0.0) / v).cwiseAbs().maxCoeff(), 1e-2);
  EXPECT_TRUE(result.quantities[1].is_constant);
  EXPECT_TRUE(std::isnan(result.quantities[1].first.value(0)));
  EXPECT_GT(result.quantities[2].num_failed, 100);
  EXPECT_NEAR(result.quantities[2].first.value(0), 1.0, 1e-2);
  EXPECT_EQ(result.quantities[3].num_failed, 8192);
  EXPECT_TRUE(std::isnan(result.quantities[3].mean));
}

TEST(Sensitivity, IntervalsHoldTheIndicesOfTheGFunction) {
  // I. M. Sobol', "Theorems and examples on high dimensional model representation", Reliability
  // Engineering and System Safety 79, 2003, pp. 187-193: V_i = 1 / (3 (1 + a_i)^2).
  const Eigen::Array4d a(0.0, 1.0, 4.5, 9.0);
  std::vector<StudyInput> inputs;
  for (const wchar_t* name : {L"a", L"b", L"c", L"d"})
    inputs.push_back(support::BoundedInput(name, 0.0, 1.0));
  const FunctionModel model = support::FunctionStudy(
      inputs, {{L"g", [&](const VectorXd& x) {
                  return (((4.0 * x.array() - 2.0).abs() + a) / (1.0 + a)).prod();
                }}});
  const Eigen::Array4d v = 1.0 / (3.0 * (1.0 + a).square());
  const double variance = (1.0 + v).prod() - 1.0;
  // Means of resamples are nearly normal: half of them are within 0.674 deviations, 95 % in 1.960.
  const auto width = [&](double confidence) {
    SensitivitySettings settings;
    settings.num_base = 256;
    settings.num_resamples = 4000;
    settings.confidence = confidence;
    const auto g = AnalyseSensitivity(model, OverBounds(model), settings).quantities[0];
    return g.first.high(0) - g.first.low(0);
  };
  EXPECT_NEAR(width(0.95) / width(0.5), 1.960 / 0.674, 0.2);
  int held = 0;
  constexpr int kSeeds = 40;
  for (int seed = 0; seed < kSeeds; ++seed) {
    SensitivitySettings settings;
    settings.num_base = 256;
    settings.num_resamples = 300;
    settings.seed = static_cast<std::uint32_t>(seed);
    const auto result = AnalyseSensitivity(model, OverBounds(model), settings);
    const QuantitySensitivity& g = result.quantities[0];
    for (Eigen::Index i = 0; i < 4; ++i) {
      const double first = v(i) / variance;
      const double total = v(i) * (1.0 + v).prod() / (1.0 + v(i)) / variance;
      held += g.first.low(i) <= first && first <= g.first.high(i);
      held += g.total.low(i) <= total && total <= g.total.high(i);
    }
  }
  EXPECT_GE(held, 8 * kSeeds * 93 / 100);  // 95 % of them, and more on Sobol points
}

TEST(Sensitivity, TakesCorrelatedInputsAsOneGroup) {
  // A linear function of normal inputs: variances add, those of correlated inputs as one.
  const double rho = 0.6;
  Eigen::MatrixXd correlations = Eigen::MatrixXd::Identity(4, 4);
  correlations(0, 2) = correlations(2, 0) = rho;
  const FunctionModel model = support::FunctionStudy(
      {support::RandomInput(L"x", types::NORMAL, {5.0, 1.0}),
       support::RandomInput(L"y", types::NORMAL, {-1.0, 2.0}),
       support::RandomInput(L"z", types::NORMAL, {0.0, 0.5}),
       support::BoundedInput(L"w", 2.0, 4.0)},
      {{L"f", [](const VectorXd& x) { return 3.0 * x(0) + x(1) - 2.0 * x(2) + 7.0 * x(3); }}},
      correlations);
  const auto result = AnalyseSensitivity(model, InputSpace(model, {}), {});
  ASSERT_EQ(result.groups.size(), 2U);  // w has no distribution and stays at its reference value
  EXPECT_EQ(result.groups[0], (std::vector<std::wstring>{L"x", L"z"}));
  const double group = 9.0 + 1.0 - 2.0 * rho * 3.0;
  const QuantitySensitivity& f = result.quantities[0];
  EXPECT_NEAR(f.mean, 14.0 + 21.0, 1e-2);
  EXPECT_NEAR(f.variance, group + 4.0, 0.05);
  for (const Estimates* order : {&f.first, &f.total}) {
    EXPECT_NEAR(order->value(0), group / (group + 4.0), 5e-3);
    EXPECT_NEAR(order->value(1), 4.0 / (group + 4.0), 5e-3);
  }
  const InputSpace fixed(model, {{}, {}, {{L"x", 1.0}, {L"z", 1.0}}});
  EXPECT_NEAR(AnalyseSensitivity(model, fixed, {}).quantities[0].first.value(0), 1.0, 1e-3);
}

TEST(InputSpace, KeepsCorrelationsWithOtherDistributions) {
  Eigen::MatrixXd correlations{{1.0, 0.5}, {0.5, 1.0}};
  const FunctionModel model =
      support::FunctionStudy({support::RandomInput(L"x", types::NORMAL, {0.0, 1.0}),
                              support::RandomInput(L"y", types::NORMAL, {0.0, 1.0})},
                             {}, correlations);
  const auto wider = support::RandomInput(L"x", types::NORMAL, {0.0, 3.0}).variable;
  EXPECT_EQ(InputSpace(model, {{}, {{L"x", wider}}, {}}).GetGroups().size(), 1U);
  const auto discrete = support::RandomInput(L"x", types::POISSON, {2.0}).variable;
  const InputSpace apart(model, {{}, {{L"x", discrete}}, {}});
  EXPECT_EQ(apart.GetGroups().size(), 2U);
  EXPECT_EQ(apart.GetUncorrelated(), std::vector<std::wstring>{L"x"});
}

TEST(InputSpace, RefusesWhatCannotVary) {
  const FunctionModel model = support::FunctionStudy({support::BoundedInput(L"x", 0.0, 1.0)}, {});
  const auto refusal = [&](const InputSpace::Choice& choice) {
    return support::MessageOf([&] { InputSpace(model, choice); });
  };
  EXPECT_EQ(refusal({}), "No input has a distribution.");
  EXPECT_EQ(refusal({{}, {}, {{L"y", 1.0}}}), "There is no input \"y\".");
  EXPECT_EQ(refusal({{}, {}, {{L"x", HUGE_VAL}}}),
            "Input \"x\" is given a value that is not finite.");
}

}  // namespace
}  // namespace corvath::analysis
