#include "metamodel/moving_least_squares/moving_least_squares_settings.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/same_figures.h"

namespace corvath::math::metamodel {

void MovingLeastSquaresSettings::Check(utils::log::LogBase* logger) const {
  SurrogateSettingsBase::Check(logger);
  if (order_ > 2) throw utils::runtime_error(L"can not set mls order >2");
  if (order_ > 0 && main_term_selection_.size() != GetNumberInputs() * order_)
    throw utils::runtime_error(L"size of selection vector is not consistent to order");
}

BitVector MovingLeastSquaresSettings::GetVariableSelection() const {
  if (order_ == 0) return main_term_selection_;
  const std::size_t m = GetNumberInputs();
  BitVector selection(m, false);
  for (std::size_t t = 0; t < main_term_selection_.size() && m > 0; ++t)
    if (main_term_selection_[t]) selection[t % m] = true;
  return selection;
}

void MovingLeastSquaresSettings::SetVariableSelection(const BitVector& bits) {
  const std::size_t m = GetNumberInputs();
  if (bits.size() != m)
    throw utils::runtime_error(
        L"size of variable selection vector is not consistent to regression dimension");
  for (std::size_t t = 0; t < main_term_selection_.size() && m > 0; ++t)
    if (!bits[t % m]) main_term_selection_[t] = false;
}

std::uint64_t MovingLeastSquaresSettings::GetNumberCoefficients() const {
  return order_ == 0 ? 1 : 1 + CountBits(main_term_selection_);
}

std::uint64_t MovingLeastSquaresSettings::GetNumberParameters() const {
  const std::uint64_t num_selected = CountBits(GetVariableSelection());
  std::uint64_t num_kernel = kernel_type_ == KernelType::kConstInflExp ? num_selected : 1;
  if (kernel_parameter_.size() > 0)
    num_kernel = static_cast<std::uint64_t>(kernel_parameter_.size());
  return GetNumberCoefficients() + (HasBoxCoxParameter() ? 1 : 0) + num_kernel +
         (order_ == 0 ? num_selected : 0);
}

bool MovingLeastSquaresSettings::Equals(const SurrogateSettingsBase& other) const {
  const auto* same = dynamic_cast<const MovingLeastSquaresSettings*>(&other);
  return same && SurrogateSettingsBase::Equals(other) && order_ == same->order_ &&
         main_term_selection_ == same->main_term_selection_ && kernel_type_ == same->kernel_type_ &&
         SameFigures(kernel_parameter_, same->kernel_parameter_);
}

void MovingLeastSquaresSettings::ResetToLinear() {
  Reset();
  SetOrder(1);
  SetKernelType(KernelType::kConstInflIsoExp);
}

void MovingLeastSquaresSettings::SetOrder(std::uint64_t order) {
  order_ = order;
  main_term_selection_.assign(GetNumberInputs() * (order == 0 ? 1 : order), true);
}

void MovingLeastSquaresSettings::SetKernelType(KernelType type) {
  kernel_type_ = type;
  kernel_parameter_.resize(0);
}

template <class Archive>
void MovingLeastSquaresSettings::serialize(Archive& ar, unsigned int /*version*/) {
  ar& boost::serialization::make_nvp(
      "SurrogateSettingsBase", boost::serialization::base_object<SurrogateSettingsBase>(*this));
  ar& BOOST_SERIALIZATION_NVP(order_) & BOOST_SERIALIZATION_NVP(main_term_selection_);
  ar& BOOST_SERIALIZATION_NVP(kernel_type_) & BOOST_SERIALIZATION_NVP(kernel_parameter_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::MovingLeastSquaresSettings)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::MovingLeastSquaresSettings)
