#include "stochastics/distributions/rv_lambda.h"

#include "foundation/closeness.h"
#include "stochastics/distributions/lambda_moments.h"
#include "stochastics/distributions/persisted_form.h"
#include "stochastics/normal_quantile.h"

#include <Eigen/LU>

#include <algorithm>
#include <cmath>

namespace corvath::algorithm {

namespace {

constexpr double kMinScale = 1e-6;
constexpr double kMinShape = -0.249;
constexpr double kMaxShape = 1e6;  // of no use beyond, and the closed forms stay within range
constexpr double kZeroShape = 1e-6;
constexpr double kMaxSkewness = 2.0;

/// The nearest allowed shape; 0 itself, the logarithm, is approached.
double AllowedShape(double shape) {
  if (std::abs(shape) < kZeroShape) return kZeroShape;
  return std::clamp(shape, kMinShape, kMaxShape);
}

/// (p^l - 1) / l
double Branch(double p, double l) {
  return std::expm1(l * std::log(p)) / l;
}

/// Mean, standard deviation, skewness and excess kurtosis of l1 to l4.
Eigen::Vector4d Moments(const Eigen::Vector4d& l) {
  const LambdaMoments moments = MomentsOfLambda(l(2), l(3));
  return {l(0) + moments.mean / l(1), moments.sd / l(1), moments.skewness, moments.kurtosis};
}

/// Shapes with this skewness, which is not negative, and excess kurtosis: Newton's method with
/// central differences. Where it does not settle, its last iterate.
Eigen::Vector2d FitShapes(double skewness, double kurtosis) {
  constexpr int kMaxPasses = 20;
  constexpr double kStep = 1e-6;
  constexpr double kTolerance = 1e-6;
  const auto shape_moments = [](const Eigen::Vector2d& l) {
    const LambdaMoments moments = MomentsOfLambda(l(0), l(1));
    return Eigen::Vector2d(moments.skewness, moments.kurtosis);
  };
  const Eigen::Vector2d target(skewness, kurtosis);
  Eigen::Vector2d l(0.2, 0.2);
  for (int pass = 0; pass < kMaxPasses; ++pass) {
    Eigen::Matrix2d jacobian;
    for (int k = 0; k < 2; ++k) {
      const Eigen::Vector2d h = kStep * Eigen::Vector2d::Unit(k);
      jacobian.col(k) = (shape_moments(l + h) - shape_moments(l - h)) / (2.0 * kStep);
    }
    const Eigen::Vector2d step = jacobian.inverse() * (target - shape_moments(l));
    if (!step.allFinite()) break;
    l = (l + step).unaryExpr(&AllowedShape);
    if (step.norm() < kTolerance) break;
  }
  return l;
}

}  // namespace

double RV_Lambda::Quantile(double p) const {
  return RV_Parameter(0) +
         (Branch(p, RV_Parameter(2)) - Branch(1.0 - p, RV_Parameter(3))) / RV_Parameter(1);
}

double RV_Lambda::GetLowerBound() const {
  return Quantile(math::kProbabilityMin);
}

double RV_Lambda::GetUpperBound() const {
  return Quantile(1.0 - math::kProbabilityMin);
}

double RV_Lambda::PDF(double x) const {
  const double p = CDF(x);
  if (p == 0.0 || p == 1.0) return 0.0;
  return RV_Parameter(1) /
         (std::pow(1.0 - p, RV_Parameter(3) - 1.0) + std::pow(p, RV_Parameter(2) - 1.0));
}

double RV_Lambda::CDF(double x) const {
  if (std::isnan(x)) return x;
  if (x < GetLowerBound()) return 0.0;
  if (x > GetUpperBound()) return 1.0;
  double p = 0.5;
  for (double step = 0.25; step >= 1e-14; step *= 0.5) p += Quantile(p) < x ? step : -step;
  return p;
}

double RV_Lambda::InverseCDF(double p) const {
  return Quantile(math::ClampProbability(p));
}

std::vector<std::wstring> RV_Lambda::GetMomentNames() const {
  return {L"Mean value", L"Standard deviation", L"Skewness", L"Excess kurtosis"};
}

std::vector<std::wstring> RV_Lambda::GetParameterNames() const {
  return {L"Location parameter l1", L"Scale parameter l2", L"Shape parameter l3",
          L"Shape parameter l4"};
}

void RV_Lambda::SetParameters(const Eigen::VectorXd& parameters) {
  RequireCount(parameters, 4, L": Obtained wrong number of parameters. Expected: 4, obtained: ");
  const Eigen::Vector4d allowed(parameters(0), std::max(parameters(1), kMinScale),
                                AllowedShape(parameters(2)), AllowedShape(parameters(3)));
  const Eigen::Vector4d moments = Moments(allowed);
  const double sd = RaiseToFloor(moments(0), moments(1));
  if (moments(1) >= sd)
    Store(allowed, moments);
  else
    TakeStats(moments(0), sd, moments(2), moments(3));
}

void RV_Lambda::SetStats(const Eigen::VectorXd& moments) {
  RequireCount(moments, 4, L": Wrong number of statistical moments. Expected: 4, obtained: ");
  RequireSpread(moments(0), moments(1));
  TakeStats(moments(0), moments(1), moments(2), moments(3));
}

void RV_Lambda::TakeStats(double mean, double sd, double skewness, double kurtosis) {
  const double magnitude = std::min(std::abs(skewness), kMaxSkewness);
  Eigen::Vector2d l = FitShapes(magnitude, std::max(kurtosis, 1.8 * magnitude * magnitude - 1.2));
  if (skewness < 0.0) std::swap(l(0), l(1));  // the mirror image
  const LambdaMoments moments = MomentsOfLambda(l(0), l(1));
  const double l2 = moments.sd / sd;
  const Eigen::Vector4d parameters(mean - moments.mean / l2, l2, l(0), l(1));
  const Eigen::Vector4d found = Moments(parameters);
  Store(parameters, found);
  IsReached(Eigen::Vector4d(mean, sd, skewness, kurtosis), found);
}

void RV_Lambda::Reset() {
  const Eigen::Vector4d parameters(0.0, 1.4635, 0.1349, 0.1349);
  Store(parameters, Moments(parameters));
}

}  // namespace corvath::algorithm

ZEL_DISTRIBUTION(RV_Lambda)
