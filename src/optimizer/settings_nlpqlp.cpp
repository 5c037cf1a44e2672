#include "optimizer/settings_nlpqlp.h"

#include "foundation/log_line.h"
#include "foundation/same_figures.h"
#include "optimizer/refuse.h"

namespace corvath::algorithm::optimizer {

using Settings = OptimizerSettingsNLPQLP<double>;

Settings::OptimizerSettingsNLPQLP(std::uint64_t ninputs, std::uint64_t nobjectives,
                                  std::uint64_t nequalities, std::uint64_t ninequalities)
    : OptimizerSettingsGradientBase<double>(ninputs, nobjectives, nequalities, ninequalities) {
  ResetOwn();
}

void Settings::Reset() {
  OptimizerSettingsGradientBase<double>::Reset();
  ResetOwn();
}

void Settings::ResetOwn() {
  nparallel_ = 1;
  SetGradientDx(0.001);
  nonmonotonous_line_search_stack_size_ = 10;
  numerical_differences_ = NumericalDifferences::kCentral;
  use_initial_stepsize_limit_ = false;
  Settings::SetMaxStepsize(0.2);
  min_stepsize_ = 0.0;
}

void Settings::SetGradientDx(double dx) {
  gradient_dx_.setConstant(static_cast<Eigen::Index>(GetNumberInputs()), dx);
}

void Settings::SetMaxStepsize(double size) {
  max_stepsize_.setConstant(static_cast<Eigen::Index>(GetNumberInputs()), size);
}

void Settings::Check(utils::LogBase* logger) const {
  OptimizerSettingsGradientBase<double>::Check(logger);
  const std::uint64_t n = GetNumberInputs();
  if (GetNumberObjectives() != 1)
    Refuse(L"NLPQLP supports only a single objective function, obtained ", GetNumberObjectives());
  if (GetStartDesigns().rows() != 1)
    Refuse(L"NLPQLP requires a single start design, obtained ", GetStartDesigns().rows());
  if (nparallel_ < 1 || nparallel_ > 15)
    Refuse(L"The number of parallel linesearches must be at least 1 and less than 16, obtained ",
           nparallel_);
  if (!(gradient_dx_.array() > 0.0).all())  // this way round, NaN is refused too
    Refuse(L"The step size for numerical differentiation must be greater than zero.");
  if (static_cast<std::uint64_t>(gradient_dx_.size()) != n)
    Refuse(
        L"The step size vector for numerical differentiation does not have correct dimension, "
        L"expected ",
        n, L", obtained ", gradient_dx_.size());
  if ((gradient_dx_.array() > 0.1 * (GetUpperBounds() - GetLowerBounds()).array()).any())
    Refuse(
        L"The step size for numerical differentiation should not exceed 10% of the parameter "
        L"range.");
  if (!gradient_dx_.allFinite())
    Refuse(
        L"The step sizes for numerical differentiation must be valid finite numbers (no NaN, no "
        L"INF).");
  if (!(GetAccuracy() >= 1e-10 && GetAccuracy() <= 0.1))
    Refuse(L"The desired accuracy should be between 1e-10 and 0.1, obtained ", GetAccuracy());
  if (nonmonotonous_line_search_stack_size_ >= 51)
    Refuse(
        L"The stack size for nonmonotonous line search must be non-negative and not be greater "
        L"than 50, obtained ",
        nonmonotonous_line_search_stack_size_);
  if (!use_initial_stepsize_limit_) return;
  if (static_cast<std::uint64_t>(max_stepsize_.size()) != n)
    Refuse(
        L"The vector containing the maximum allowed step size does not have the correct "
        L"dimension, expected ",
        n, L", obtained ", max_stepsize_.size());
  if ((max_stepsize_.array() <= 5.0 * gradient_dx_.array()).any())
    Refuse(
        L"The maximum step size must be more than 5x as large as the differentiation step size!");
  if ((max_stepsize_.array() <= 20.0 * gradient_dx_.array()).any())
    utils::log::LogLine(logger, utils::log::kWarning)
        << L"The maximum step size should be more than 20x as large as the differentiation step "
           L"size.";
  if (!max_stepsize_.allFinite())
    Refuse(
        L"The maximum allowed step size vector must contain valid finite numbers (no NaN, no "
        L"INF).");
}

bool Settings::Equals(const OptimizerSettingsBase<double>& other) const {
  const auto* const own = dynamic_cast<const Settings*>(&other);
  return own && OptimizerSettingsGradientBase<double>::Equals(other) &&
         nparallel_ == own->nparallel_ && math::SameFigures(gradient_dx_, own->gradient_dx_) &&
         nonmonotonous_line_search_stack_size_ == own->nonmonotonous_line_search_stack_size_ &&
         numerical_differences_ == own->numerical_differences_ &&
         use_initial_stepsize_limit_ == own->use_initial_stepsize_limit_ &&
         math::SameFigures(max_stepsize_, own->max_stepsize_) &&
         math::SameFigure(min_stepsize_, own->min_stepsize_);
}

}  // namespace corvath::algorithm::optimizer
