#include "metamodel/families.h"

namespace corvath::math::transform {
namespace {

using metamodel::MakeTransform;
using support::Deviation;

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

TEST(TransBoxCox, NamesItsNumbersAndEqualsItsKindAlone) {
  EXPECT_FALSE(TransMinMax().Equals(TransLimits()));
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

TEST(MakeTransform, TakesParametersOfTheRightNumberOnly) {
  const auto parameters = [](int type, const std::vector<double>& p) {
    return MakeTransform(static_cast<TransformType>(type), p)->GetParameters();
  };
  using V = std::vector<double>;
  EXPECT_EQ(MakeTransform(TransformType::kNone, {1.0}), nullptr);
  for (const double lambda : {-0.5, 0.0, 1.0 / 3.0})
    EXPECT_EQ(parameters(2, {lambda, 1.0, 2.0}), (V{lambda, 1.0, 2.0}));
  for (const int type : {1, 3}) EXPECT_EQ(parameters(type, {2.0, 3.0}), (V{2.0, 3.0}));
  EXPECT_EQ(parameters(1, {2.0}), (V{0.0, 1.0}));
  EXPECT_EQ(parameters(2, {}), (V{1.0, 0.1, 10.1}));
  EXPECT_EQ(parameters(3, {}), (V{-HUGE_VAL, HUGE_VAL}));
}

}  // namespace
}  // namespace corvath::math::transform
