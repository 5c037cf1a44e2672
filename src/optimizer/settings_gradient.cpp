#include "optimizer/settings_gradient.h"

#include "foundation/same_figures.h"
#include "optimizer/refuse.h"

#include <algorithm>

namespace corvath::algorithm::optimizer {

using Settings = OptimizerSettingsGradientBase<double>;

void Settings::Reset() {
  OptimizerSettingsBase<double>::Reset();
  max_num_function_calls_ = 10000;
  accuracy_ = 5e-6;
}

void Settings::Check(utils::LogBase* logger) const {
  const Matrix& start = GetStartDesigns();
  if (max_num_function_calls_ == 0)
    Refuse(L"An optimization problem was defined where <= 0 function calls are permitted (",
           max_num_function_calls_, L".");
  if (static_cast<std::uint64_t>(start.cols()) != GetNumberInputs())
    Refuse(L"The dimension of the start design does not match. obtained ", start.cols(),
           L" columns, expected ", GetNumberInputs(), L".");
  if (start.rows() == 0) Refuse(L"At least one start design must be defined.");
  if (accuracy_ < 0.0)
    Refuse(L"The desired accuracy (tolerance) can not be smaller than zero, obtained ", accuracy_);
  if (accuracy_ == 0.0) Refuse(L"The desired accuracy of iterative solvers can not be exact zero.");
  // Bounds of a wrong size are the base's to refuse.
  const Eigen::Index num_lower = std::min(start.cols(), GetLowerBounds().size());
  const Eigen::Index num_upper = std::min(start.cols(), GetUpperBounds().size());
  for (Eigen::Index row = 0; row < start.rows(); ++row)
    for (Eigen::Index i = 0; i < start.cols(); ++i) {
      if (i < num_lower && start(row, i) < GetLowerBounds()(i))
        Refuse(L"A start design violates the lower bounds (see design #", row, L").");
      if (i < num_upper && start(row, i) > GetUpperBounds()(i))
        Refuse(L"A start design violates the upper bounds (see design #", row, L").");
    }
  OptimizerSettingsBase<double>::Check(logger);
}

bool Settings::Equals(const OptimizerSettingsBase<double>& other) const {
  const auto* const own = dynamic_cast<const Settings*>(&other);
  return own && OptimizerSettingsBase<double>::Equals(other) &&
         max_num_function_calls_ == own->max_num_function_calls_ &&
         math::SameFigure(accuracy_, own->accuracy_);
}

}  // namespace corvath::algorithm::optimizer
