#include "analysis/propagation/scatter.h"

#include "foundation/closeness.h"

#include <cmath>

namespace corvath::analysis {

using Eigen::Index;

Scatter::Scatter(const StudyModel& model, const InputSpace& space, bool with_errors)
    : model_(model), space_(space) {
  if (!with_errors) return;
  const Eigen::VectorXd errors = model.StandardErrors();
  for (Index k = 0; k < errors.size(); ++k) {
    if (!std::isfinite(errors(k)))
      unknown_.push_back(model.GetQuantities()[static_cast<std::size_t>(k)].name);
    else if (errors(k) > 0.0)
      erring_.push_back(k);
  }
  errors_.resize(static_cast<Index>(erring_.size()));
  for (Index i = 0; i < errors_.size(); ++i)
    errors_(i) = errors(erring_[static_cast<std::size_t>(i)]);
}

std::vector<std::wstring> Scatter::GetNames() const {
  std::vector<std::wstring> names;
  for (const Index i : space_.GetColumns())
    names.push_back(model_.GetInputs()[static_cast<std::size_t>(i)].name);
  for (const Index k : erring_)
    names.push_back(L"error of " + model_.GetQuantities()[static_cast<std::size_t>(k)].name);
  return names;
}

Eigen::MatrixXd Scatter::Inputs(const ConstPoints& u) const {
  return space_.FromGauss(u.leftCols(space_.GetDim()));
}

Eigen::MatrixXd Scatter::Evaluate(const ConstPoints& u) const {
  const Eigen::MatrixXd x = Inputs(u);
  if (erring_.empty()) return model_.Evaluate(x);
  Eigen::MatrixXd values(u.rows(), model_.GetNumQuantities());
  values.leftCols(model_.GetNumResponses()) = model_.Responses(x);
  for (Index i = 0; i < errors_.size(); ++i)
    values.col(erring_[static_cast<std::size_t>(i)]) += errors_(i) * u.col(space_.GetDim() + i);
  values.rightCols(model_.GetNumQuantities() - model_.GetNumResponses()) =
      model_.Criteria(x, values.leftCols(model_.GetNumResponses()));
  return values;
}

bool IsViolated(double g) {
  return g < 0.0 && !math::IsClose(g, 0.0);
}

}  // namespace corvath::analysis
