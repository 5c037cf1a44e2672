#include "metamodel/regression/linear_regression.h"
#include "metamodel/regression/polynomial_basis.h"
#include "metamodel/transforms/trans_box_cox.h"

#include <Eigen/Cholesky>

#include <cmath>
#include <limits>

namespace corvath::math::metamodel {

namespace {

using transform::TransBoxCox;
using transform::TransformType;

/// Parameters of a TransBoxCox by its integer exponent; these are the neutral ones.
struct BoxCoxTrial {
  std::int64_t lambda_inv = 1;
  double min_scaled = 0.1;
  double max_scaled = 10.1;

  TransBoxCox Make() const { return TransBoxCox(lambda_inv, min_scaled, max_scaled); }
};

constexpr std::int64_t kExponents[] = {-1, -2, -3, -4, -5, -6, -8, -10, -13, -20, 0,
                                       20, 13, 10, 8,  6,  5,  4,  3,   2,   1};
constexpr double kBounds[][2] = {{0.1, 10.1}, {10.1, 0.1}};

/// Over the pairs in which both numbers are finite; NaN without any.
double RootMeanSquareError(const Eigen::VectorXd& a, const Eigen::VectorXd& b) {
  double sum = 0.0;
  double count = 0.0;
  for (Eigen::Index i = 0; i < a.size(); ++i) {
    if (!std::isfinite(a(i)) || !std::isfinite(b(i))) continue;
    sum += (a(i) - b(i)) * (a(i) - b(i));
    count += 1.0;
  }
  return std::sqrt(sum / count);
}

/// Weighted least squares with one factorisation for many right sides.
class RepeatedRegression {
 public:
  RepeatedRegression(const Eigen::MatrixXd& design, const Eigen::VectorXd& weights)
      : design_(design), weights_(weights), factors_(NormalMatrix(design, weights)) {}

  Eigen::VectorXd Solve(const Eigen::VectorXd& y) const {
    if (weights_.size() == 0) return factors_.solve(design_.transpose() * y);
    return factors_.solve(design_.transpose() * weights_.cwiseProduct(y));
  }

 private:
  const Eigen::MatrixXd& design_;
  const Eigen::VectorXd& weights_;
  Eigen::LDLT<Eigen::MatrixXd> factors_;
};

/// The candidate with the smallest error in the user's units, the first of equals. Limits play no
/// part. False when a transform cannot be built.
bool Search(const RepeatedRegression& regression, const Eigen::MatrixXd& design,
            const Eigen::VectorXd& values, BoxCoxTrial& best) {
  double best_error = std::numeric_limits<double>::max();
  for (const auto& [lower, upper] : kBounds) {
    for (const std::int64_t exponent : kExponents) {
      const BoxCoxTrial candidate{exponent, lower, upper};
      TransBoxCox trans = candidate.Make();
      if (!trans.Build(values)) return false;
      const Eigen::VectorXd predicted =
          trans.Backward(design * regression.Solve(trans.Forward(values)));
      const double error = RootMeanSquareError(predicted, values);
      if (!(error < best_error)) continue;
      best_error = error;
      best = candidate;
    }
  }
  return true;
}

}  // namespace

bool LinearRegression::BuildBoxCox() {
  RequireSupportData();
  const Eigen::MatrixXd points = TransformedPoints();
  points_trans_reduced_ = ReduceColumns(points, GetVariableSelection());
  residuals_.resize(0);
  const bool constant = values_.size() == 0 || (values_.array() == values_(0)).all();
  if (GetNumberCoefficients() >= static_cast<std::uint64_t>(GetNumberPoints()) || constant) {
    SetValueTransform(TransformType::kBoxCox, BoxCoxTrial().Make().GetParameters());
    if (!Build()) return false;
  } else {
    const Eigen::MatrixXd design = BuildRegressionMatrix(points, settings_.GetMainTermSelection(),
                                                         settings_.GetInteractionSelection());
    const RepeatedRegression regression(design, weights_);
    BoxCoxTrial best;
    if (!Search(regression, design, values_, best)) return false;
    SetValueTransform(TransformType::kBoxCox, best.Make().GetParameters());
    coefficient_matrix_ = design;
    coefficients_ = regression.Solve(TransformedValues());
    need_build_ = false;
  }
  if (trans_coord_) settings_.SetCoordTransformParameter(trans_coord_->GetParameters());
  settings_.SetValueTransformParameter(trans_value_->GetParameters());
  settings_.SetValueTransform(TransformType::kBoxCox);
  settings_.SetState(SettingsState::kOptimized);
  return true;
}

}  // namespace corvath::math::metamodel
