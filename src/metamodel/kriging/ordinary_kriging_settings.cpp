#include "metamodel/kriging/ordinary_kriging_settings.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "foundation/log_line.h"
#include "foundation/same_figures.h"
#include "metamodel/factories.h"

namespace corvath::math::metamodel {

namespace {

[[noreturn]] void Refuse(utils::log::LogBase* logger, const std::wstring& message) {
  utils::log::LogLine(logger, utils::log::kError) << message;
  throw utils::runtime_error(message);
}

}  // namespace

void OrdinaryKrigingSettings::Check(utils::log::LogBase* logger) const {
  SurrogateSettingsBase::Check(logger);
  if (selection_.size() != GetNumberInputs())
    Refuse(logger, L"size of selection vector is not consistent to number of inputs");
  const auto kernel = MakeKernel(kernel_type_, kernel_parameter_);
  if (!kernel->IsCorrelation()) Refuse(logger, L"Kernel is not of type correlation");
  const std::uint64_t count = kernel->GetParameterCount();
  if (!kernel->IsIsotropic() && kernel->IsConstantInfluence() && count != 0 &&
      count != CountBits(selection_))
    Refuse(logger, L"Wrong number of dimensions in anisotropic kernel");
}

std::uint64_t OrdinaryKrigingSettings::GetNumberParameters() const {
  const std::uint64_t num_selected = CountBits(selection_);
  std::uint64_t num_kernel = static_cast<std::uint64_t>(kernel_parameter_.size());
  if (num_kernel == 0) num_kernel = kernel_type_ == KernelType::kConstInflExp ? num_selected : 1;
  return 1 + (HasBoxCoxParameter() ? 1 : 0) + num_kernel + num_selected;
}

std::uint64_t OrdinaryKrigingSettings::GetComplexity() const {
  return kernel_type_ == KernelType::kConstInflExp ? 11 : 10;
}

bool OrdinaryKrigingSettings::Equals(const SurrogateSettingsBase& other) const {
  if (!SurrogateSettingsBase::Equals(other)) return false;
  const auto* own = dynamic_cast<const OrdinaryKrigingSettings*>(&other);
  return own && SameFigure(nugget_, own->nugget_) && use_likelihood_ == own->use_likelihood_ &&
         kernel_type_ == own->kernel_type_ &&
         SameFigures(kernel_parameter_, own->kernel_parameter_) && selection_ == own->selection_;
}

void OrdinaryKrigingSettings::ResetToLinear() {
  Reset();
  const OrdinaryKrigingSettings defaults(GetNumberInputs());
  nugget_ = defaults.nugget_;
  use_likelihood_ = defaults.use_likelihood_;
  kernel_type_ = defaults.kernel_type_;
  kernel_parameter_ = defaults.kernel_parameter_;
  selection_ = defaults.selection_;
}

void OrdinaryKrigingSettings::SetKernelType(KernelType type) {
  kernel_type_ = type;
  kernel_parameter_.resize(0);
}

template <class Archive>
void OrdinaryKrigingSettings::serialize(Archive& ar, unsigned int /*version*/) {
  ar& boost::serialization::make_nvp(
      "SurrogateSettingsBase", boost::serialization::base_object<SurrogateSettingsBase>(*this));
  ar& BOOST_SERIALIZATION_NVP(nugget_) & BOOST_SERIALIZATION_NVP(use_likelihood_);
  ar& BOOST_SERIALIZATION_NVP(kernel_type_) & BOOST_SERIALIZATION_NVP(kernel_parameter_);
  ar& BOOST_SERIALIZATION_NVP(selection_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::OrdinaryKrigingSettings)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::OrdinaryKrigingSettings)
