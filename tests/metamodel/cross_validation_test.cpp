
#include "metamodel/families.h"

#include <numeric>

namespace corvath::math::metamodel {
namespace {

using Eigen::VectorXd;
using support::Deviation;
using transform::TransformType;

/// Cross-validation and leave-one-out of a family are models built without the points in question.
/// With a transform of values they work in transformed units.
/// @param make  (rows, values, settings): an unbuilt model of these rows of the points
template <class Settings, class Make>
void ExpectRefits(const Eigen::MatrixXd& points, Settings settings, const Make& make) {
  const Eigen::Index n = points.rows();
  std::vector<Eigen::Index> all(static_cast<std::size_t>(n));
  std::iota(all.begin(), all.end(), Eigen::Index{0});
  const VectorXd values = 4.0 + (3.0 * points.col(0)).array().sin() +
                          points.col(0).array() * points.col(1).array() +
                          (2.0 * points.col(1)).array().exp();
  transform::TransBoxCox trans(0);  // the logarithm
  trans.Build(values);
  const VectorXd z = trans.Forward(values);
  IndexVector groups(n);  // of different sizes, numbers with gaps, one of a single point
  for (Eigen::Index i = 0; i < n; ++i) groups(i) = static_cast<std::uint64_t>(i * i % 7);
  groups(3) = std::numeric_limits<std::uint64_t>::max();  // costs no walk over empty groups
  const IndexVector each = IndexVector::LinSpaced(n, 0, static_cast<std::uint64_t>(n - 1));
  const auto refit = [&](const IndexVector& subsets) {
    VectorXd predicted(n);
    for (Eigen::Index i = 0; i < n; ++i) {
      std::vector<Eigen::Index> kept;
      for (const Eigen::Index k : all)
        if (subsets(k) != subsets(i)) kept.push_back(k);
      auto model = make(kept, VectorXd(z(kept)), settings);
      EXPECT_TRUE(model.Build());
      predicted(i) = model.Approximate(points.row(i))(0);
    }
    return predicted;
  };
  auto plain = make(all, z, settings);
  ASSERT_TRUE(plain.Build());
  EXPECT_LT(Deviation(plain.ApproximateCrossValidation(groups), refit(groups)), 1e-8);
  EXPECT_LT(Deviation(plain.ApproximateLeaveOneOut(), refit(each)), 1e-8);
  EXPECT_LT(Deviation(plain.ApproximateCrossValidation({}), plain.ApproximateLeaveOneOut()), 1e-8);
  EXPECT_LT(Deviation(plain.ApproximateCrossValidation(each), plain.ApproximateLeaveOneOut()),
            1e-8);
  settings.SetValueTransform(TransformType::kBoxCox);
  settings.SetValueTransformParameter({0.0, 0.1, 10.1});
  settings.SetLimitTransform(TransformType::kLimits);
  settings.SetLimitTransformParameter({-1e3, 9.0});
  auto transformed = make(all, values, settings);
  ASSERT_TRUE(transformed.Build());
  for (const IndexVector& subsets : {groups, IndexVector()}) {
    const VectorXd back = trans.Backward(plain.ApproximateCrossValidation(subsets));
    EXPECT_GT(back.maxCoeff(), 9.0);  // or the limit is not put to the test
    EXPECT_LT(Deviation(transformed.ApproximateCrossValidation(subsets), back.cwiseMin(9.0)), 1e-8);
  }
}

TEST(CrossValidation, IsThatOfRefits) {
  // More points than one block of moving least squares.
  const Eigen::MatrixXd many = support::UniformPoints(260, 2, 1), few = many.topRows(40);
  const VectorXd weights = 0.5 + support::UniformVector(40, 2).array();
  for (const bool weighted : {false, true}) {
    LinearRegressionSettings quadratic(2);
    quadratic.SetOrder(2);
    ExpectRefits(few, quadratic, [&](const auto& rows, const VectorXd& y, const auto& settings) {
      return LinearRegression(few(rows, Eigen::all), y, settings,
                              weighted ? VectorXd(weights(rows)) : VectorXd());
    });
  }
  for (const std::uint64_t order : {0u, 1u, 2u}) {
    MovingLeastSquaresSettings local(2);
    local.SetCoordTransform(TransformType::kNone);
    local.SetOrder(order);
    local.SetKernelParameter(VectorXd::Constant(1, 0.7));
    ExpectRefits(many, local, [&](const auto& rows, const VectorXd& y, const auto& settings) {
      return MovingLeastSquares(many(rows, Eigen::all), y, settings);
    });
  }
  for (const KernelType type : {KernelType::kConstInflIsoExp, KernelType::kConstInflExp}) {
    OrdinaryKrigingSettings kriging(2);
    kriging.SetCoordTransform(TransformType::kNone);
    kriging.SetKernelType(type);
    const bool isotropic = type == KernelType::kConstInflIsoExp;
    kriging.SetKernelParameter(isotropic ? VectorXd::Constant(1, 1.2)
                                         : VectorXd(Eigen::Vector2d(0.8, 1.1)));
    kriging.SetNugget(1e-3);
    const auto make = [&](const auto& rows, const VectorXd& y, const auto& settings) {
      return OrdinaryKriging(few(rows, Eigen::all), y, settings);
    };
    ExpectRefits(few, kriging, make);
    OrdinaryKriging model(few, few.rowwise().prod(), kriging);
    ASSERT_TRUE(model.Build());
    for (const IndexVector& subsets :
         {IndexVector(), IndexVector(IndexVector::LinSpaced(40, 0, 6))})
      EXPECT_LT(Deviation(model.ApproximateCrossValidation(subsets),
                          model.ApproximateCrossValidationDirect(subsets)),
                1e-8);
    // Nothing predicts a group of all points.
    const IndexVector zero = IndexVector::Zero(40);
    EXPECT_TRUE(model.ApproximateCrossValidation(zero).array().isNaN().all());
    EXPECT_TRUE(model.ApproximateCrossValidationDirect(zero).array().isNaN().all());
  }
}

}  // namespace
}  // namespace corvath::math::metamodel
