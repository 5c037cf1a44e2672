#include "metamodel/moving_least_squares/moving_least_squares.h"

#include "foundation/exception.h"
#include "foundation/same_figures.h"
#include "foundation/text_stream.h"
#include "metamodel/cross_validation_groups.h"
#include "metamodel/factories.h"
#include "metamodel/kernels/kernel_block.h"
#include "metamodel/moving_least_squares/local_fits.h"
#include "metamodel/regression/polynomial_basis.h"
#include "metamodel/regression/quadratic_box_cox.h"

#include <Eigen/LU>

#include <algorithm>
#include <stdexcept>
#include <typeinfo>

namespace corvath::math::metamodel {

namespace {

std::wstring KernelText(KernelType type) {
  switch (type) {
    case KernelType::kConstInflExp:
      return L"Constant influence, anisotropic, exponential";
    case KernelType::kConstInflIsoExp:
      return L"Constant influence, isotropic, exponential";
    case KernelType::kConstInflIsoReg:
      return L"Constant influence, isotropic, regularized";
    case KernelType::kNodalInflExp:
      return L"Nodal influence, exponential";
  }
  throw std::logic_error("Unknown kernel type");
}

}  // namespace

MovingLeastSquares::MovingLeastSquares(const Eigen::MatrixXd& points, const Eigen::VectorXd& values)
    : MovingLeastSquares(points, values,
                         MovingLeastSquaresSettings(static_cast<std::uint64_t>(points.cols()))) {}

MovingLeastSquares::MovingLeastSquares(const Eigen::MatrixXd& points, const Eigen::VectorXd& values,
                                       const MovingLeastSquaresSettings& settings)
    : SurrogateBase(points, values) {
  Initialize(settings);
}

void MovingLeastSquares::SetSettings(const SurrogateSettingsBase& settings) {
  try {
    settings_ = dynamic_cast<const MovingLeastSquaresSettings&>(settings);
  } catch (const std::bad_cast& error) {
    throw std::logic_error(
        std::string("Initialize Moving Least Squares failed. Could not convert surrogate setting "
                    ": ") +
        error.what());
  }
  need_build_ = true;
  if (!settings_.Equals(MovingLeastSquaresSettings(settings_.GetNumberInputs())))
    settings_.SetState(SettingsState::kReplaced);
}

bool MovingLeastSquares::Build() {
  if (!need_build_ && !NeedsBuild(trans_coord_)) return true;
  RequireSupportData();
  residuals_.resize(0);
  if (GetNumberCoefficients() > static_cast<std::uint64_t>(GetNumberPoints())) return false;
  const Eigen::MatrixXd points = TransformedPoints();
  points_trans_reduced_ = ReduceColumns(points, GetVariableSelection());
  values_trans_ = TransformedValues();
  if (settings_.GetOrder() != 0)
    coefficient_matrix_ = BuildRegressionMatrix(points, settings_.GetMainTermSelection(), {});
  else
    coefficient_matrix_.resize(0, 0);  // nothing of an earlier order stays
  WriteTransformParameters(settings_);
  need_build_ = false;
  return true;
}

bool MovingLeastSquares::IsSolvable() const {
  RequireSupportData();
  if (GetNumberCoefficients() > static_cast<std::uint64_t>(GetNumberPoints())) return false;
  if (settings_.GetOrder() == 0) return true;
  const Eigen::MatrixXd basis =
      BuildRegressionMatrix(PreviewTransformedPoints(), settings_.GetMainTermSelection(), {});
  return Eigen::FullPivLU<Eigen::MatrixXd>(basis.transpose() * basis).rank() == basis.cols();
}

bool MovingLeastSquares::IsBuilt() const {
  return !need_build_ && !NeedsBuild(trans_coord_) && !NeedsBuild(trans_value_);
}

void MovingLeastSquares::CompleteOldForm() {
  if (NeedsBuild(trans_coord_) || NeedsBuild(trans_value_)) return;
  try {
    if (values_trans_.size() == 0)
      values_trans_ = trans_value_ ? Eigen::VectorXd(trans_value_->Forward(values_)) : values_;
    if (points_trans_reduced_.size() == 0)
      points_trans_reduced_ = ReduceColumns(
          trans_coord_ ? trans_coord_->Forward(*points_) : *points_, GetVariableSelection());
  } catch (const std::logic_error&) {
    // Parts that do not fit each other: the model stays incomplete and is refused when it is used.
  }
}

void MovingLeastSquares::RequireConsistent() const {
  const Eigen::Index n = values_trans_.size();
  const auto num_selected = static_cast<Eigen::Index>(CountBits(GetVariableSelection()));
  const auto num_terms = static_cast<Eigen::Index>(GetNumberCoefficients());
  const bool has_basis = settings_.GetOrder() == 0 || (coefficient_matrix_.rows() == n &&
                                                       coefficient_matrix_.cols() == num_terms);
  if (n > 0 && points_trans_reduced_.rows() == n && points_trans_reduced_.cols() == num_selected &&
      has_basis)
    return;
  utils::WideTextStream message;
  message << L"Moving Least Squares: " << n << L" values, support points of "
          << points_trans_reduced_.rows() << L" x " << points_trans_reduced_.cols()
          << L" and a basis of " << coefficient_matrix_.rows() << L" x "
          << coefficient_matrix_.cols() << L" for " << num_selected << L" selected inputs and "
          << num_terms << L" terms";
  throw utils::runtime_error(message.str());
}

Eigen::VectorXd MovingLeastSquares::Approximate(const ConstPoints& points) const {
  if (!IsBuilt()) throw std::logic_error("MLS::Approximate - need build first");
  if (points.cols() != GetNumberInputs())
    throw std::logic_error("MLS::Approximate - dimension of approximation points is wrong");
  RequireConsistent();
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  const KernelBlock kernel_block(*kernel, points_trans_reduced_);
  const bool is_average = settings_.GetOrder() == 0;
  const Eigen::MatrixXd no_basis(values_trans_.size(), 0);  // of order 0: the weighted mean
  LocalFits fits(is_average ? no_basis : coefficient_matrix_, values_trans_);
  const PolynomialBasis basis(points.cols(),
                              is_average ? BitVector() : settings_.GetMainTermSelection(), {});
  const BitVector selection = GetVariableSelection();

  const Eigen::Index block_size = std::min(fits.GetBlockSize(), points.rows());
  Eigen::MatrixXd weights(values_trans_.size(), block_size);
  Eigen::MatrixXd basis_at(block_size, basis.GetNumberTerms());
  Eigen::MatrixXd block;
  Eigen::MatrixXd reduced;
  Eigen::VectorXd values(points.rows());
  for (Eigen::Index begin = 0; begin < points.rows(); begin += block_size) {
    const Eigen::Index rows = std::min(block_size, points.rows() - begin);
    block = points.middleRows(begin, rows);
    if (trans_coord_) trans_coord_->ForwardInPlace(block);
    ReduceColumns(block, selection, reduced);
    kernel_block.Weights(reduced, weights.leftCols(rows));
    basis.Evaluate(block, basis_at.topRows(rows));
    auto result = values.segment(begin, rows);
    fits.Predict(weights.leftCols(rows), basis_at.topRows(rows), true, result);
    BackTransform(result);
  }
  return values;
}

Eigen::VectorXd MovingLeastSquares::PredictSupportPoints(const IndexVector* subsets) const {
  RequireConsistent();
  const auto kernel = MakeKernel(settings_.GetKernelType(), settings_.GetKernelParameter());
  const KernelBlock kernel_block(*kernel, points_trans_reduced_);
  const Eigen::Index n = values_trans_.size();
  const Eigen::MatrixXd no_basis(n, 0);
  const Eigen::MatrixXd& basis = settings_.GetOrder() == 0 ? no_basis : coefficient_matrix_;
  LocalFits fits(basis, values_trans_);
  const Eigen::Index block_size = std::min(fits.GetBlockSize(), n);
  Eigen::MatrixXd weights(n, block_size);
  Eigen::VectorXd values(n);
  for (Eigen::Index begin = 0; begin < n; begin += block_size) {
    const Eigen::Index rows = std::min(block_size, n - begin);
    auto block = weights.leftCols(rows);
    kernel_block.Weights(points_trans_reduced_.middleRows(begin, rows), block);
    if (subsets) RemoveGroups(*subsets, begin, block);
    fits.Predict(block, basis.middleRows(begin, rows), true, values.segment(begin, rows));
  }
  BackTransform(values);
  return values;
}

Eigen::VectorXd MovingLeastSquares::ApproximateSupportPoints() const {
  if (!IsBuilt()) throw std::logic_error("MLS::Approximate - need build first");
  return PredictSupportPoints(nullptr);
}

Eigen::VectorXd MovingLeastSquares::ApproximateCrossValidation(const IndexVector& subsets) const {
  if (!IsBuilt()) throw std::logic_error("MLS::ApproximateCrossValidation - need build first");
  const IndexVector groups = GroupsOrPoints(subsets, values_trans_.size());
  return PredictSupportPoints(&groups);
}

bool MovingLeastSquares::BuildBoxCox() {
  residuals_.resize(0);
  const ValueTransformChoice choice = FitQuadraticBoxCox(*this, interruption_point_);
  SetValueTransform(choice.type, choice.parameters);
  WriteTransformParameters(settings_);
  settings_.SetValueTransform(choice.type);
  settings_.SetState(SettingsState::kOptimized);
  Build();
  return true;
}

std::wstring MovingLeastSquares::GetName(bool short_form) const {
  std::wstring name = L"Moving Least Squares";
  if (!short_form) name += L" | " + std::to_wstring(settings_.GetOrder());
  return name;
}

std::wstring MovingLeastSquares::GetDescription() const {
  return GetName(false) + L"| " + KernelText(settings_.GetKernelType()) + L" " +
         SurrogateBase::GetDescription();
}

bool MovingLeastSquares::Equals(const SurrogateBase& other) const {
  const auto* same = dynamic_cast<const MovingLeastSquares*>(&other);
  return same && SurrogateBase::Equals(other) && SameFigures(values_trans_, same->values_trans_) &&
         SameFigures(coefficient_matrix_, same->coefficient_matrix_) &&
         settings_.Equals(same->settings_);
}

}  // namespace corvath::math::metamodel
