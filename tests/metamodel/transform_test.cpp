#include "metamodel/factories.h"
#include "metamodel/transforms/trans_box_cox.h"
#include "metamodel/transforms/trans_limits.h"
#include "metamodel/transforms/trans_min_max.h"
#include "support/message_of.h"
#include "support/points.h"

#include <gtest/gtest.h>

#include <cmath>

namespace corvath::math::transform {
namespace {

using metamodel::MakeTransform;
using support::Deviation;
using support::MessageOfExactly;

TEST(TransMinMax, MapsEachColumnToTheTargetAndBack) {
  Eigen::MatrixXd data{{1.0, -3.0, 7.0}, {5.0, -1.0, 7.0}, {2.0, -2.0, 7.0}};
  TransMinMax trans(-1.0, 1.0);
  ASSERT_TRUE(trans.Build(data));
  // (x - 3) / 2 and x + 2; a constant column moves to the lower target.
  const Eigen::MatrixXd expected{{-1.0, -1.0, -1.0}, {1.0, 1.0, -1.0}, {-0.5, 0.0, -1.0}};
  EXPECT_EQ(trans.Forward(data), expected);
  EXPECT_LT(Deviation(trans.Backward(expected), data), 1e-15);
  EXPECT_EQ(trans.GetName(), L"MinMax ( -1, 1 )");

  // A range of 1e-13 of the magnitude is noise: the column keeps its scale.
  TransMinMax noise;
  noise.Build(Eigen::Vector2d(1e3, 1e3 + 2e-10));
  EXPECT_EQ(noise.GetScaling()(0), 1.0);
}

TEST(TransBoxCox, FollowsItsFormulaAndReturnsForEveryExponent) {
  const Eigen::VectorXd y = 50.0 * support::UniformVector(30, 1).array() - 20.0;
  const Eigen::ArrayXd u = 0.1 + 10.0 * (y.array() - y.minCoeff()) / (y.maxCoeff() - y.minCoeff());
  for (const std::int64_t k : {-20, -3, -2, -1, 0, 1, 2, 3, 20}) {
    for (const bool falling : {false, true}) {
      TransBoxCox trans(k, falling ? 10.1 : 0.1, falling ? 0.1 : 10.1);
      ASSERT_TRUE(trans.Build(y));
      const Eigen::ArrayXd base = falling ? Eigen::ArrayXd(10.2 - u) : u;
      const double lambda = k == 0 ? 0.0 : 1.0 / static_cast<double>(k);
      const Eigen::VectorXd z =
          k == 0 ? Eigen::ArrayXd(base.log()) : Eigen::ArrayXd((base.pow(lambda) - 1.0) / lambda);
      EXPECT_LT(Deviation(trans.Forward(y), z), 1e-13) << k;
      // The 20th power loses 20 times the last bits.
      EXPECT_LT(Deviation(trans.Backward(trans.Forward(y)), y), 1e-12) << k;
    }
  }
}

TEST(TransBoxCox, NamesItsNumbers) {
  TransBoxCox trans(-2, 1.0, 3.0);
  EXPECT_EQ(trans.GetName(), L"BoxCox (-0.5, )");
  trans.Build(Eigen::Vector2d(0.0, 4.0));  // u = 0.5 y + 1, back 2 u - 2
  EXPECT_EQ(trans.GetName(), L"BoxCox (-0.5, 0.5 , 1 , -2 )");
  EXPECT_EQ(trans.GetParameters(), (std::vector<double>{-0.5, 1.0, 3.0}));
}

TEST(TransLimits, ClipsOutputOnly) {
  TransLimits trans(-1.0, 2.0);
  ASSERT_TRUE(trans.Build(Eigen::MatrixXd()));
  const Eigen::Vector4d x(-5.0, 0.5, 7.0, HUGE_VAL);
  EXPECT_EQ(trans.Forward(x), x);
  EXPECT_EQ(trans.Backward(x), Eigen::Vector4d(-1.0, 0.5, 2.0, 2.0));
  EXPECT_TRUE(std::isnan(trans.Backward(Eigen::MatrixXd::Constant(1, 1, std::nan("")))(0)));
  EXPECT_EQ(trans.GetName(), L"Limits (-1, 2)");

  TransLimits open;
  ASSERT_TRUE(open.Build(Eigen::MatrixXd()));
  EXPECT_EQ(open.Backward(x), x);
}

TEST(Transform, RefusesBadDataAndUseBeforeBuild) {
  const Eigen::VectorXd one = Eigen::VectorXd::Ones(1);
  const Eigen::VectorXd two(Eigen::Vector2d(1.0, 2.0));
  using Runtime = std::runtime_error;
  const auto refusal = [](Transform&& trans, const Eigen::MatrixXd& data) {
    const std::string message = MessageOfExactly<Runtime>([&] { trans.Build(data); });
    EXPECT_TRUE(trans.NeedBuild());
    return message;
  };
  EXPECT_EQ(refusal(TransMinMax(), one), "At least two points are required.");
  EXPECT_EQ(refusal(TransMinMax(), Eigen::MatrixXd(3, 0)), "At least two points are required.");
  EXPECT_EQ(refusal(TransBoxCox(1, 0.0, 1.0), two),
            "Minimum and maximum for scaling should be larger than zero.");
  EXPECT_EQ(refusal(TransBoxCox(), one), "At least two values are required.");
  EXPECT_EQ(refusal(TransBoxCox(), Eigen::MatrixXd::Ones(2, 2)),
            "Transformation works only for response vector.");
  EXPECT_EQ(refusal(TransLimits(2.0, 2.0), two), "Minimum limit should be less than maximum.");

  const auto unbuilt = [](const Transform& trans) {
    return MessageOfExactly<std::logic_error>([&] { trans.Backward(Eigen::MatrixXd(1, 1)); });
  };
  EXPECT_EQ(unbuilt(TransMinMax()), "can not transform - build first");
  EXPECT_EQ(unbuilt(TransBoxCox()), "can not transform - build first");
  EXPECT_EQ(unbuilt(TransLimits()), "can not transform - build first");
  TransBoxCox built;
  built.Build(two);
  EXPECT_EQ(MessageOfExactly<std::logic_error>([&] { built.Forward(Eigen::MatrixXd(2, 2)); }),
            "TransBoxCox works only for scalar data");
  TransMinMax scaled;
  scaled.Build(two);
  EXPECT_NE(MessageOfExactly<std::logic_error>([&] {
              scaled.Forward(Eigen::MatrixXd(2, 2));
            }).find("not for 2"),
            std::string::npos);
}

TEST(MakeTransform, TakesParametersOfTheRightNumberOnly) {
  const auto parameters = [](int type, const std::vector<double>& p) {
    return MakeTransform(static_cast<TransformType>(type), p)->GetParameters();
  };
  using V = std::vector<double>;
  EXPECT_EQ(MakeTransform(TransformType::kNone, {1.0}), nullptr);
  EXPECT_EQ(parameters(1, {2.0, 3.0}), (V{2.0, 3.0}));
  EXPECT_EQ(parameters(1, {2.0}), (V{0.0, 1.0}));
  EXPECT_EQ(parameters(2, {-0.5, 1.0, 2.0}), (V{-0.5, 1.0, 2.0}));
  EXPECT_EQ(parameters(2, {1.0 / 3.0, 1.0, 2.0}), (V{1.0 / 3.0, 1.0, 2.0}));
  EXPECT_EQ(parameters(2, {0.0, 1.0, 2.0}), (V{0.0, 1.0, 2.0}));
  EXPECT_EQ(parameters(2, {}), (V{1.0, 0.1, 10.1}));
  EXPECT_EQ(parameters(3, {2.0, 3.0}), (V{2.0, 3.0}));
  EXPECT_EQ(parameters(3, {}), (V{-HUGE_VAL, HUGE_VAL}));
  EXPECT_EQ(MessageOfExactly<std::logic_error>([&] { parameters(4, {}); }),
            "Unknown transformation type.");
  for (const double lambda : {std::nan(""), 1e-300})
    EXPECT_NE(MessageOfExactly<std::logic_error>([&] {
                parameters(2, {lambda, 1.0, 2.0});
              }),
              "<no exception>");
}

TEST(Transform, EqualsComparesClassStateAndNumbers) {
  TransMinMax built;
  built.Build(Eigen::Vector2d(1.0, 2.0));
  EXPECT_FALSE(built.Equals(TransMinMax()));
  EXPECT_TRUE(TransMinMax().Equals(TransMinMax()));
  EXPECT_FALSE(TransMinMax().Equals(TransLimits()));
  EXPECT_FALSE(TransBoxCox(2).Equals(TransBoxCox(3)));
  EXPECT_FALSE(TransLimits(0.0).Equals(TransLimits(1.0)));
  const std::unique_ptr<Transform> copy(built.Clone());
  EXPECT_TRUE(copy->Equals(built));
}

}  // namespace
}  // namespace corvath::math::transform
