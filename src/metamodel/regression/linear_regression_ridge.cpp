#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"

#include <cmath>
#include <limits>

// Polynomials with penalised coefficients.

namespace corvath::math::metamodel {

namespace {

/// Penalties that compete, by their decimal logarithms; relative to terms of unit variance.
constexpr double kLowestLog = -6.0;
constexpr double kHighestLog = 2.0;
constexpr int kNumSteps = 20;
/// Weights of the terms of order 2 beside the linear ones.
constexpr double kCurvatures[] = {1.0, 0.3};

bool HasCurvature(const LinearRegressionSettings& settings) {
  const BitVector interactions = settings.GetInteractionSelection();
  return settings.GetOrder() > 1 || CountBits(interactions) > 0;
}

}  // namespace

StandardTerms LinearRegression::TermsOf(const ConstPoints& transformed, double curvature) const {
  return StandardTerms(transformed, settings_.GetMainTermSelection(),
                       settings_.GetInteractionSelection(), curvature);
}

bool LinearRegression::BuildRidge(const RidgePenalty& penalty) {
  RequireSupportData();
  residuals_.resize(0);
  if (GetNumberPoints() == 0 || settings_.GetOrder() > 2) return false;
  const Eigen::MatrixXd points = TransformedPoints();
  points_trans_reduced_ = ReduceColumns(points, GetVariableSelection());
  coefficient_matrix_ = BuildRegressionMatrix(points, settings_.GetMainTermSelection(),
                                              settings_.GetInteractionSelection());
  const StandardTerms terms = TermsOf(points, penalty.curvature);
  const RidgeSolver solver(terms.GetDesign(), TransformedValues());
  coefficients_ = terms.ToPlain(solver.GetCoefficients(penalty.penalty), solver.GetConstant());
  WriteTransformParameters(settings_);
  settings_.SetState(SettingsState::kOptimized);
  need_build_ = false;
  return true;
}

RidgePenalty LinearRegression::BuildOptimalRidge(const IndexVector& singles,
                                                 const IndexVector& groups,
                                                 Eigen::VectorXd& predicted) {
  RequireSupportData();
  if (trans_value_ && !BuildBoxCox()) return {};
  const Eigen::MatrixXd points = TransformedPoints();
  const Eigen::VectorXd values = TransformedValues();
  RidgePenalty best;
  double least = std::numeric_limits<double>::infinity();
  for (const double curvature : kCurvatures) {
    if (curvature != 1.0 && !HasCurvature(settings_)) continue;
    PassInterruptionPoint();
    const RidgeSolver solver(TermsOf(points, curvature).GetDesign(), values);
    for (int step = kNumSteps; step >= 0; --step) {
      const double penalty =
          std::pow(10.0, kLowestLog + (kHighestLog - kLowestLog) * step / kNumSteps);
      Eigen::VectorXd trial = solver.CrossValidate(penalty, singles);
      BackTransform(trial);
      const double error = (values_ - trial).squaredNorm();
      if (!(error < least)) continue;
      least = error;
      best = {penalty, curvature};
    }
  }
  if (!std::isfinite(least)) return {};
  BuildRidge(best);
  predicted = CrossValidateRidge(best, groups);
  return best;
}

Eigen::VectorXd LinearRegression::CrossValidateRidge(const RidgePenalty& penalty,
                                                     const IndexVector& groups) const {
  const RidgeSolver solver(TermsOf(PreviewTransformedPoints(), penalty.curvature).GetDesign(),
                           ForwardValues());
  Eigen::VectorXd predicted = solver.CrossValidate(penalty.penalty, groups);
  BackTransform(predicted);
  return predicted;
}

}  // namespace corvath::math::metamodel
