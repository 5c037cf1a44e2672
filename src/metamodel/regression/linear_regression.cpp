#include "metamodel/regression/linear_regression.h"

#include "foundation/exception.h"
#include "foundation/same_figures.h"
#include "foundation/text_stream.h"
#include "metamodel/regression/polynomial_basis.h"

#include <Eigen/Cholesky>
#include <Eigen/LU>

#include <algorithm>
#include <limits>
#include <set>
#include <stdexcept>
#include <typeinfo>

namespace corvath::math::metamodel {

namespace {

/// Rows predicted at once: the transformed block of ten inputs fits the first-level cache.
constexpr Eigen::Index kBlockRows = 256;

/// 1 - leverage up to which a point counts as not determined by the others. With as many terms as
/// weighted points none is, whatever rounding makes of the leverages. Otherwise the rounding of the
/// normal equations, which grows with their condition; up to a limit, because terms that depend on
/// each other have no condition, but leverages.
/// @param reciprocal_condition  of the normal equations
double UndeterminedShare(const Eigen::MatrixXd& design, const Eigen::VectorXd& weights,
                         double reciprocal_condition) {
  constexpr double kLeast = 1e-9;
  constexpr double kMost = 1e-3;
  const Eigen::Index num_points =
      weights.size() == 0 ? design.rows() : (weights.array() != 0.0).count();
  if (design.cols() >= num_points) return std::numeric_limits<double>::infinity();
  return std::clamp(std::numeric_limits<double>::epsilon() / reciprocal_condition, kLeast, kMost);
}

}  // namespace

LinearRegression::LinearRegression(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                   const Eigen::VectorXd& weights)
    : LinearRegression(points, values,
                       LinearRegressionSettings(static_cast<std::uint64_t>(points.cols())),
                       weights) {}

LinearRegression::LinearRegression(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                   const LinearRegressionSettings& settings,
                                   const Eigen::VectorXd& weights)
    : SurrogateBase(points, values) {
  weights_ = weights;
  RequireSupportData();
  Initialize(settings);
}

void LinearRegression::SetSettings(const SurrogateSettingsBase& settings) {
  try {
    settings_ = dynamic_cast<const LinearRegressionSettings&>(settings);
  } catch (const std::bad_cast& error) {
    throw std::logic_error(
        std::string("Initialize Linear Regression failed. Could not convert surrogate setting : ") +
        error.what());
  }
  need_build_ = true;
  if (!settings_.Equals(LinearRegressionSettings(settings_.GetNumberInputs())))
    settings_.SetState(SettingsState::kReplaced);
}

bool LinearRegression::Build() {
  if (!need_build_ && !NeedsBuild(trans_coord_) && !NeedsBuild(trans_value_) &&
      !NeedsBuild(trans_limit_))
    return true;
  RequireSupportData();
  residuals_.resize(0);
  if (GetNumberCoefficients() > static_cast<std::uint64_t>(GetNumberPoints())) return false;
  const Eigen::MatrixXd points = TransformedPoints();
  points_trans_reduced_ = ReduceColumns(points, GetVariableSelection());
  coefficient_matrix_ = BuildRegressionMatrix(points, settings_.GetMainTermSelection(),
                                              settings_.GetInteractionSelection());
  coefficients_ = SolveRegression(coefficient_matrix_, TransformedValues(), weights_);
  WriteTransformParameters(settings_);
  need_build_ = false;
  return true;
}

bool LinearRegression::IsSolvable() const {
  RequireSupportData();
  const std::uint64_t num_coefficients = GetNumberCoefficients();
  if (num_coefficients > static_cast<std::uint64_t>(GetNumberPoints())) return false;
  const Eigen::MatrixXd design =
      BuildRegressionMatrix(PreviewTransformedPoints(), settings_.GetMainTermSelection(),
                            settings_.GetInteractionSelection());
  const Eigen::FullPivLU<Eigen::MatrixXd> factors(NormalMatrix(design, weights_));
  return factors.rank() == design.cols();
}

bool LinearRegression::IsBuilt() const {
  return !need_build_ && !NeedsBuild(trans_coord_);
}

bool LinearRegression::BuildOptimal(const IndexVector&) {
  if (!(trans_value_ ? BuildBoxCox() : Build())) return false;
  settings_.SetState(SettingsState::kOptimized);
  return true;
}

void LinearRegression::RequireConsistent() const {
  if (!IsBuilt()) throw utils::runtime_error(L"can not approximate - build first");
  const std::uint64_t expected = GetNumberCoefficients();
  utils::WideTextStream message;
  if (settings_.GetNumberInputs() != static_cast<std::uint64_t>(GetNumberInputs())) {
    message << L"Linear Regression: settings for " << settings_.GetNumberInputs()
            << L" inputs, support points with " << GetNumberInputs();
    throw utils::runtime_error(message.str());
  }
  if (static_cast<std::uint64_t>(coefficients_.size()) == expected) return;
  message << L"Linear Regression: " << coefficients_.size() << L" coefficients for " << expected
          << L" terms";
  throw utils::runtime_error(message.str());
}

void LinearRegression::RequireSupportMatrix() const {
  if (coefficient_matrix_.rows() == values_.size() &&
      coefficient_matrix_.cols() == coefficients_.size() && coefficients_.size() > 0 &&
      (weights_.size() == 0 || weights_.size() == values_.size()))
    return;
  utils::WideTextStream message;
  message << L"Linear Regression: regression matrix of " << coefficient_matrix_.rows() << L" x "
          << coefficient_matrix_.cols() << L" and " << weights_.size() << L" weights for "
          << values_.size() << L" support points and " << coefficients_.size() << L" coefficients";
  throw utils::runtime_error(message.str());
}

Eigen::VectorXd LinearRegression::Approximate(const ConstPoints& points) const {
  RequireConsistent();
  RequireInputs(points.cols());
  const PolynomialBasis basis(points.cols(), settings_.GetMainTermSelection(),
                              settings_.GetInteractionSelection());
  Eigen::VectorXd values(points.rows());
  Eigen::MatrixXd transformed(std::min(kBlockRows, points.rows()), points.cols());
  for (Eigen::Index begin = 0; begin < points.rows(); begin += kBlockRows) {
    const Eigen::Index rows = std::min(kBlockRows, points.rows() - begin);
    auto block = values.segment(begin, rows);
    if (trans_coord_) {
      transformed.topRows(rows) = points.middleRows(begin, rows);
      trans_coord_->ForwardInPlace(transformed.topRows(rows));
      basis.Sum(transformed.topRows(rows), coefficients_, block);
    } else {
      basis.Sum(points.middleRows(begin, rows), coefficients_, block);
    }
    BackTransform(block);
  }
  return values;
}

Eigen::VectorXd LinearRegression::ApproximateSupportPoints() const {
  RequireConsistent();
  RequireSupportMatrix();
  Eigen::VectorXd values = coefficient_matrix_ * coefficients_;
  BackTransform(values);
  return values;
}

Eigen::VectorXd LinearRegression::ForwardValues() const {
  Eigen::VectorXd values = values_;
  if (trans_value_) trans_value_->ForwardInPlace(values);
  return values;
}

Eigen::VectorXd LinearRegression::ApproximateLeaveOneOut() const {
  if (!IsBuilt()) throw utils::runtime_error(L"can not calculate LOO approximation - build first");
  RequireSupportMatrix();
  const Eigen::MatrixXd& X = coefficient_matrix_;
  const Eigen::LDLT<Eigen::MatrixXd> factors(NormalMatrix(X, weights_));
  const double undetermined = UndeterminedShare(X, weights_, factors.rcond());
  const Eigen::MatrixXd solved = factors.solve(X.transpose());  // P x N
  Eigen::ArrayXd leverage = X.transpose().cwiseProduct(solved).colwise().sum();
  if (weights_.size() > 0) leverage *= weights_.array();
  const Eigen::VectorXd z = ForwardValues();
  const Eigen::VectorXd e = z - X * coefficients_;
  Eigen::VectorXd result(z.size());
  // A point that the other points do not determine at all (leverage 1) is predicted by the mean of
  // the others: its residual over 0 would be noise.
  const auto others = static_cast<double>(z.size() - 1);
  for (Eigen::Index i = 0; i < z.size(); ++i) {
    const double d = 1.0 - leverage(i);
    result(i) = d <= undetermined ? (z.sum() - z(i)) / others : z(i) - e(i) / d;
  }
  BackTransform(result);
  return result;
}

Eigen::VectorXd LinearRegression::ApproximateCrossValidation(const IndexVector& subsets) const {
  if (subsets.size() == 0) return ApproximateLeaveOneOut();
  if (!IsBuilt()) throw utils::runtime_error(L"can not calculate CV approximation - build first");
  if (subsets.size() != values_.size()) {
    utils::WideTextStream message;
    message << L"Surrogate approximate CV needs same number of support points (" << values_.size()
            << L") as subset indeces (" << subsets.size() << L")";
    throw utils::runtime_error(message.str());
  }
  RequireSupportMatrix();
  const Eigen::VectorXd z = ForwardValues();
  const Eigen::VectorXd all =
      weights_.size() > 0 ? weights_ : Eigen::VectorXd::Ones(values_.size());
  Eigen::VectorXd result(values_.size());
  // Only groups that have points: the indices of a file may be anything.
  const std::set<std::uint64_t> groups(subsets.begin(), subsets.end());
  for (const std::uint64_t group : groups) {
    const auto inside = subsets.array() == group;
    const Eigen::VectorXd weights = inside.select(0.0, all);
    const Eigen::VectorXd coefficients = SolveRegression(coefficient_matrix_, z, weights);
    for (Eigen::Index i = 0; i < subsets.size(); ++i)
      if (subsets(i) == group) result(i) = coefficient_matrix_.row(i).dot(coefficients);
  }
  BackTransform(result);
  return result;
}

bool LinearRegression::Equals(const SurrogateBase& other) const {
  const auto* same = dynamic_cast<const LinearRegression*>(&other);
  return same && SurrogateBase::Equals(other) && SameFigures(coefficients_, same->coefficients_) &&
         SameFigures(coefficient_matrix_, same->coefficient_matrix_) &&
         settings_.Equals(same->settings_);
}

}  // namespace corvath::math::metamodel
