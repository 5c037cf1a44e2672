#include "metamodel/regression/linear_regression_settings.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"

#include <algorithm>

namespace corvath::math::metamodel {

LinearRegressionSettings::LinearRegressionSettings(std::uint64_t ninputs)
    : SurrogateSettingsBase(ninputs), main_term_selection_(ninputs, true) {}

std::uint64_t LinearRegressionSettings::NumberPairs() const {
  const std::uint64_t m = GetNumberInputs();
  return m == 0 ? 0 : m * (m - 1) / 2;
}

void LinearRegressionSettings::Check(utils::log::LogBase* logger) const {
  SurrogateSettingsBase::Check(logger);
  if (main_term_selection_.size() != GetNumberInputs() * order_)
    throw utils::runtime_error(
        L"size of main term selection vector is not consistent to regression order");
  if (!interaction_selection_.empty() && interaction_selection_.size() != NumberPairs())
    throw utils::runtime_error(
        L"size of interaction selection vector is not consistent to regression dimension");
}

BitVector LinearRegressionSettings::GetVariableSelection() const {
  const std::size_t m = GetNumberInputs();
  BitVector selection(m, false);
  for (std::size_t t = 0; t < main_term_selection_.size() && m > 0; ++t)
    if (main_term_selection_[t]) selection[t % m] = true;
  if (interaction_selection_.size() != NumberPairs()) return selection;  // none, or a damaged model
  std::size_t pair = 0;
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = i + 1; j < m; ++j)
      if (interaction_selection_[pair++]) selection[i] = selection[j] = true;
  return selection;
}

void LinearRegressionSettings::SetVariableSelection(const BitVector& bits) {
  const std::size_t m = GetNumberInputs();
  if (bits.size() != m)
    throw utils::runtime_error(
        L"size of variable selection vector is not consistent to regression dimension");
  for (std::size_t t = 0; t < main_term_selection_.size(); ++t)
    if (!bits[t % m]) main_term_selection_[t] = false;
  if (interaction_selection_.size() != NumberPairs()) return;
  std::size_t pair = 0;
  for (std::size_t i = 0; i < m; ++i)
    for (std::size_t j = i + 1; j < m; ++j, ++pair)
      if (!bits[i] || !bits[j]) interaction_selection_[pair] = false;
}

std::uint64_t LinearRegressionSettings::GetNumberCoefficients() const {
  return 1 + CountBits(main_term_selection_) + CountBits(interaction_selection_);
}

std::uint64_t LinearRegressionSettings::GetNumberParameters() const {
  return GetNumberCoefficients() + (HasBoxCoxParameter() ? 1 : 0);
}

std::uint64_t LinearRegressionSettings::GetComplexity() const {
  if (order_ != 1) return order_;
  return CountBits(interaction_selection_) > 0 || HasBoxCoxParameter() ? 1 : 0;
}

bool LinearRegressionSettings::Equals(const SurrogateSettingsBase& other) const {
  const auto* same = dynamic_cast<const LinearRegressionSettings*>(&other);
  return same && SurrogateSettingsBase::Equals(other) && order_ == same->order_ &&
         main_term_selection_ == same->main_term_selection_ &&
         interaction_selection_ == same->interaction_selection_;
}

void LinearRegressionSettings::ResetToLinear() {
  Reset();
  SetOrder(1);
}

void LinearRegressionSettings::SetOrder(std::uint64_t order) {
  order_ = order;
  main_term_selection_.assign(GetNumberInputs() * order, true);
  interaction_selection_.assign(order < 2 ? 0 : NumberPairs(), true);
}

void LinearRegressionSettings::SetInteractionSelection(const BitVector& bits) {
  if (!bits.empty() && bits.size() != NumberPairs())
    throw utils::runtime_error(
        L"size of interaction selection vector is not consistent to regression dimension");
  interaction_selection_ = bits;
}

template <class Archive>
void LinearRegressionSettings::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp(
      "SurrogateSettingsBase", boost::serialization::base_object<SurrogateSettingsBase>(*this));
  ar& BOOST_SERIALIZATION_NVP(order_) & BOOST_SERIALIZATION_NVP(main_term_selection_);
  ar& BOOST_SERIALIZATION_NVP(interaction_selection_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::LinearRegressionSettings)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::LinearRegressionSettings)
