#include "analysis/optimisation/next_designs.h"

#include "analysis/function_model.h"
#include "support/function_study.h"

namespace {

using namespace corvath::analysis;

constexpr double kError = 0.8;

double Mean(double x) {
  return 3.0 - 7.0 * x + 6.0 * x * x;  // 3, 1, 2 at 0, 0.5, 1
}

/// A parabola with a constant error through three analysed designs.
class Analysed : public FunctionModel {
 public:
  Analysed()
      : FunctionModel({support::BoundedInput(L"x", 0.0, 1.0)},
                      {StudyQuantity{L"y", StudyQuantity::Kind::kResponse, std::nullopt}},
                      [](const ConstPoints& x) {
                        return Eigen::MatrixXd(x.unaryExpr([](double at) { return Mean(at); }));
                      }) {
    SetErrors(Eigen::VectorXd::Constant(1, kError), [](const ConstPoints& x, const ConstPoints&) {
      return Eigen::MatrixXd(x.rows(), 0);
    });
    designs_ = {{L"1", L"2", L"3"}, Eigen::Vector3d(0.5, 0.0, 1.0), Eigen::Vector3d(1.0, 3.0, 2.0)};
  }
  const StudyDesigns& GetDesigns() const override { return designs_; }

 private:
  StudyDesigns designs_;
};

/// Integrals over F ~ normal(mean, error at x): of max(1 - F, 0), and of F >= 0.9.
std::pair<double, double> Integrals(double x) {
  constexpr int kSteps = 200000;
  const double distance = std::min({x, std::abs(x - 0.5), 1.0 - x}) / 0.5;
  const double deviation = kError * std::sqrt(1.0 - std::exp(-distance * distance));
  double gain = 0.0, chance = 0.0;
  for (int k = 0; k < kSteps; ++k) {
    const double z = -10.0 + 20.0 * (k + 0.5) / kSteps;
    const double share = 20.0 / kSteps * std::exp(-0.5 * z * z) / std::sqrt(2.0 * M_PI);
    gain += share * std::max(1.0 - Mean(x) - deviation * z, 0.0);
    chance += Mean(x) + deviation * z >= 0.9 ? share : 0.0;
  }
  return {gain, chance};
}

TEST(NextDesigns, ImproveAsTheClosedFormExpects) {
  for (const bool has_limit : {false, true}) {
    DesignWishes wishes;
    wishes.objectives = {{L"y", false}};
    if (has_limit) wishes.limits = {L"y >= 0.9"};
    const DesignTask task(std::make_shared<Analysed>(), wishes);
    const auto next = ProposeDesigns(task, NextBy::kImprovement, {0}, 4, {});
    ASSERT_EQ(next.size(), 4U);
    const auto [gain, chance] = Integrals(next[0].inputs(0));
    EXPECT_NEAR(next[0].gain, gain, 1e-6);
    EXPECT_NEAR(next[0].chance, has_limit ? chance : 1.0, 1e-4);
    for (double x = 0.01; x < 1.0; x += 0.02) {
      const auto [other_gain, other_chance] = Integrals(x);
      EXPECT_GE(gain * (has_limit ? chance : 1.0),
                0.999 * other_gain * (has_limit ? other_chance : 1.0))
          << x;
    }
    // Inside, and apart from what is analysed and from each other.
    std::vector<double> known = {0.0, 0.5, 1.0};
    for (const NextDesign& design : next) {
      const double x = design.inputs(0);
      EXPECT_TRUE(x >= 0.0 && x <= 1.0);
      for (const double other : known) EXPECT_GT(std::abs(x - other), 0.01);
      known.push_back(x);
    }
  }
}

}  // namespace
