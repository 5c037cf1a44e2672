#include "foundation/exception.h"
#include "foundation/text_stream.h"
#include "metamodel/central_differences.h"
#include "metamodel/error_radii.h"
#include "metamodel/local_errors.h"
#include "metamodel/surrogate.h"

#include <algorithm>
#include <stdexcept>

/// What a built model hands to the classes that estimate its errors and gradients.
namespace corvath::math::metamodel {

Eigen::VectorXd SurrogateBase::ApproximatePrognosis() const {
  RequireValues();
  if (residuals_.size() == values_.size()) return values_ - residuals_;
  if (subsets_.size() == values_.size()) return ApproximateCrossValidation(subsets_);
  return ApproximateLeaveOneOut();
}

void SurrogateBase::BeginBuildErrors() {
  if (need_build_ || NeedsBuild(trans_coord_) || NeedsBuild(trans_value_))
    throw std::logic_error("Surrogate::BuildErrors - need build first");
  // A build with other support data leaves the groups of the earlier ones behind, without residuals.
  if (residuals_.size() == 0 && subsets_.size() != values_.size()) subsets_.resize(0);
  RequireSameSupport();
  if (points_radii_mean_ != 0.0 && weight_error_radius_ != 0.0) return;
  const ErrorRadii radii = ErrorRadii::Of(points_trans_reduced_);
  points_radii_mean_ = radii.density;
  weight_error_radius_ = radii.local_error;
}

bool SurrogateBase::BuildErrors() {
  BeginBuildErrors();
  if (residuals_.size() != values_.size()) residuals_ = values_ - ApproximatePrognosis();
  return true;
}

bool SurrogateBase::BuildErrors(const IndexVector& subsets) {
  BeginBuildErrors();
  const bool same_groups = subsets.size() == subsets_.size() && subsets == subsets_ &&
                           (subsets.size() == 0 || subsets.size() == values_.size());
  if (residuals_.size() == values_.size() && same_groups) return true;
  RequireValues();
  // Computed first: a refused request leaves the stored groups and residuals alone.
  Eigen::VectorXd residuals = values_ - ApproximateCrossValidation(subsets);
  subsets_ = subsets;
  residuals_ = std::move(residuals);
  return true;
}

void SurrogateBase::SetErrors(const Eigen::VectorXd& residuals, const IndexVector& subsets) {
  if (residuals.size() != values_.size() || subsets.size() != values_.size())
    throw std::logic_error("Surrogate::SetErrors - one residual and one group per support point");
  BeginBuildErrors();
  residuals_ = residuals;
  subsets_ = subsets;
}

Eigen::MatrixXd SurrogateBase::ApproximateErrors(const ConstPoints& points) const {
  if (points.cols() != GetNumberInputs()) {
    utils::WideTextStream message;
    message << L"Surrogate approximate errors needs same number of input dimension ("
            << points.cols() << L") as support points (" << GetNumberInputs() << L")";
    throw utils::runtime_error(message.str());
  }
  if (residuals_.size() == 0 || residuals_.size() != values_.size())
    throw utils::runtime_error(L"Surrogate ApproximateErrors needs BuildErrors first");
  const BitVector selection = GetVariableSelection();
  const Eigen::Index r = points_trans_reduced_.cols();
  if (CountBits(selection) != static_cast<std::uint64_t>(r) ||
      (r > 0 && points_trans_reduced_.rows() != values_.size()))
    throw utils::runtime_error(
        L"Surrogate ApproximateErrors: internal support point table has wrong dimension");

  const ErrorRadii radii{points_radii_mean_, weight_error_radius_};
  LocalErrors local(points_trans_reduced_, values_, residuals_, radii);
  Eigen::MatrixXd errors(points.rows(), kNumErrorColumns);
  Eigen::MatrixXd block;
  Eigen::MatrixXd x;
  for (Eigen::Index begin = 0; begin < points.rows(); begin += local.GetBlockRows()) {
    const Eigen::Index rows = std::min(local.GetBlockRows(), points.rows() - begin);
    block = points.middleRows(begin, rows);
    if (trans_coord_) trans_coord_->ForwardInPlace(block);
    ReduceColumns(block, selection, x);
    local.Evaluate(x, errors.middleRows(begin, rows));
  }
  return errors;
}

Eigen::MatrixXd SurrogateBase::ApproximateGradients(const ConstPoints& points) const {
  RequireInputs(points.cols());
  if (points_->rows() == 0) throw std::logic_error("Surrogate: support point data is missing");
  constexpr double kRelativeStep = 0.0001;  // of the range of the support points
  const BitVector selection = GetVariableSelection();
  Eigen::VectorXd steps =
      (points_->colwise().maxCoeff() - points_->colwise().minCoeff()) * kRelativeStep;
  for (Eigen::Index j = 0; j < steps.size(); ++j)
    if (!selection.at(static_cast<std::size_t>(j))) steps(j) = 0.0;
  return CentralDifferences([this](const ConstPoints& x) { return Approximate(x); }, points, steps);
}

}  // namespace corvath::math::metamodel
