#include "foundation/constants.h"
#include "metamodel/kriging/definite_factor.h"
#include "metamodel/kriging/ordinary_kriging.h"

#include <Eigen/Cholesky>

#include <map>
#include <memory>
#include <stdexcept>
#include <vector>

// Leave-one-out and cross-validation of a kriging model, and what they say about its inputs.

namespace corvath::math::metamodel {

namespace {

using math::kNaN;

/// The points of each group, in the order of the groups' numbers; one group per point without
/// numbers.
std::vector<std::vector<Eigen::Index>> GroupsOf(const IndexVector& subsets, Eigen::Index n) {
  std::map<std::uint64_t, std::vector<Eigen::Index>> by_number;
  for (Eigen::Index i = 0; i < n; ++i)
    by_number[subsets.size() == 0 ? static_cast<std::uint64_t>(i) : subsets(i)].push_back(i);
  std::vector<std::vector<Eigen::Index>> groups;
  groups.reserve(by_number.size());
  for (auto& entry : by_number) groups.push_back(std::move(entry.second));
  return groups;
}

double SumOfSquares(const Eigen::VectorXd& values, const Eigen::VectorXd& predictions) {
  return predictions.size() == values.size() ? (values - predictions).squaredNorm() : kNaN;
}

}  // namespace

void OrdinaryKriging::RequireCrossValidation(const IndexVector& subsets) const {
  if (!IsBuilt() || values_trans_.size() != kernel_weights_.size())
    throw std::logic_error("can not approximate CV - build first");
  RequireConsistent();
  if (subsets.size() != 0 && subsets.size() != values_trans_.size())
    throw std::logic_error("subset vector has wrong length");
}

Eigen::VectorXd OrdinaryKriging::ApproximateLeaveOneOut() const {
  return ApproximateCrossValidation(IndexVector());
}

/// With B = C^-1 - a a' / (1' a), a = C^-1 1, the projection that takes the mean out, the residuals
/// of a group G that is left out are (B_GG)^-1 (B y)_G: no system without the group is solved.
/// O. Dubrule, "Cross validation of kriging in a unique neighborhood", Mathematical Geology 15,
/// 1983, pp. 687-699.
Eigen::VectorXd OrdinaryKriging::ApproximateCrossValidation(const IndexVector& subsets) const {
  RequireCrossValidation(subsets);
  const Eigen::Index n = values_trans_.size();
  Eigen::MatrixXd correlation;
  BuildCorrelation(points_trans_reduced_, correlation);
  DefiniteFactor factor;
  if (!factor.Compute(correlation)) throw std::logic_error("rebuild of correlation matrix failed");
  const Eigen::MatrixXd root = factor.InverseRoot();
  const Eigen::VectorXd a = root.transpose() * root.rowwise().sum();
  const Eigen::VectorXd b = root.transpose() * (root * values_trans_);
  const double sum_a = a.sum();
  const Eigen::VectorXd projected = b - (b.sum() / sum_a) * a;

  Eigen::VectorXd predictions(n);
  Eigen::MatrixXd columns;
  for (const std::vector<Eigen::Index>& group : GroupsOf(subsets, n)) {
    const auto size = static_cast<Eigen::Index>(group.size());
    if (size == n) {  // nothing is left to predict from
      predictions.setConstant(kNaN);
      break;
    }
    if (size == 1) {
      const Eigen::Index i = group.front();
      const double own = root.col(i).squaredNorm() - a(i) * a(i) / sum_a;
      predictions(i) = values_trans_(i) - projected(i) / own;
      continue;
    }
    columns = root(Eigen::all, group);
    const Eigen::VectorXd own_a = a(group);
    const Eigen::MatrixXd own = columns.transpose() * columns - own_a * own_a.transpose() / sum_a;
    predictions(group) = values_trans_(group) - own.ldlt().solve(Eigen::VectorXd(projected(group)));
  }
  BackTransform(predictions);
  return predictions;
}

Eigen::VectorXd OrdinaryKriging::ApproximateCrossValidationDirect(
    const IndexVector& subsets) const {
  RequireCrossValidation(subsets);
  const Eigen::Index n = values_trans_.size();
  Eigen::MatrixXd correlation;
  BuildCorrelation(points_trans_reduced_, correlation);
  Eigen::VectorXd predictions(n);
  for (const std::vector<Eigen::Index>& group : GroupsOf(subsets, n)) {
    // The group's points stay as unknowns of their own: ones on the diagonal, zeros elsewhere.
    Eigen::MatrixXd without = correlation;
    Eigen::VectorXd y = values_trans_;
    Eigen::VectorXd ones = Eigen::VectorXd::Ones(n);
    for (const Eigen::Index i : group) {
      without.row(i).setZero();
      without.col(i).setZero();
      without(i, i) = 1.0;
      y(i) = 0.0;
      ones(i) = 0.0;
    }
    const Eigen::LDLT<Eigen::MatrixXd> ldlt(without);
    const Eigen::VectorXd b = ldlt.solve(y);
    const Eigen::VectorXd a = ldlt.solve(ones);
    const double mean = b.sum() / a.sum();
    const Eigen::VectorXd w = b - mean * a;
    for (const Eigen::Index i : group) predictions(i) = mean + correlation.row(i).dot(w);
  }
  BackTransform(predictions);
  return predictions;
}

Eigen::VectorXd OrdinaryKriging::ComputeSingleCoPs(const IndexVector& subsets) const {
  RequireValues();
  const double error = SumOfSquares(values_, ApproximateCrossValidation(subsets));
  const double total = (values_.array() - values_.mean()).square().sum();
  const BitVector selection = GetVariableSelection();
  Eigen::VectorXd single = Eigen::VectorXd::Zero(static_cast<Eigen::Index>(selection.size()));
  const std::uint64_t num_selected = CountBits(selection);
  Eigen::Index radius = 0;  // of the input in work, among those that are selected
  for (std::size_t j = 0; j < selection.size(); ++j) {
    if (!selection[j]) continue;
    auto& result = single(static_cast<Eigen::Index>(j));
    if (num_selected < 2) {
      result = 1.0 - error / total;
      break;
    }
    OrdinaryKrigingSettings smaller = settings_;
    BitVector others = selection;
    others[j] = false;
    smaller.SetVariableSelection(others);
    const Eigen::VectorXd& radii = settings_.GetKernelParameter();
    if (radii.size() > 1) {
      Eigen::VectorXd other_radii(radii.size() - 1);
      other_radii << radii.head(radius), radii.tail(radii.size() - 1 - radius);
      smaller.SetKernelParameter(other_radii);
    }
    ++radius;
    const std::unique_ptr<OrdinaryKriging> model(Clone());
    model->SetSettings(smaller);
    result =
        model->Build()
            ? (SumOfSquares(values_, model->ApproximateCrossValidation(subsets)) - error) / total
            : kNaN;
  }
  return single;
}

}  // namespace corvath::math::metamodel
