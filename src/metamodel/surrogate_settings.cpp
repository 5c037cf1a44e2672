#include "metamodel/surrogate_settings.h"

#include "archive/instantiate.h"
#include "foundation/exception.h"

#include <algorithm>
#include <cmath>

namespace corvath::math::metamodel {

using transform::TransformType;

void SurrogateSettingsBase::Reset() {
  coord_transform_ = TransformType::kMinMax;
  coord_transform_parameter_.clear();
  value_transform_ = TransformType::kNone;
  value_transform_parameter_.clear();
  handle_failed_ = 0;
  state_ = SettingsState::kFresh;
  limit_transform_ = TransformType::kNone;
  limit_transform_parameter_.clear();
  input_names_.clear();
}

void SurrogateSettingsBase::Check(utils::log::LogBase*) const {
  if (ninputs_ == 0) throw utils::runtime_error(L"Number of inputs can not be 0.");
}

bool SurrogateSettingsBase::Equals(const SurrogateSettingsBase& other) const {
  return ninputs_ == other.ninputs_ && coord_transform_ == other.coord_transform_ &&
         coord_transform_parameter_ == other.coord_transform_parameter_ &&
         value_transform_ == other.value_transform_ &&
         value_transform_parameter_ == other.value_transform_parameter_ &&
         limit_transform_ == other.limit_transform_ &&
         limit_transform_parameter_ == other.limit_transform_parameter_ &&
         input_names_ == other.input_names_;
}

bool SurrogateSettingsBase::HasBoxCoxParameter() const {
  constexpr double kLambdaTolerance = 1e-10;
  return !value_transform_parameter_.empty() &&
         std::abs(value_transform_parameter_.front() - 1.0) > kLambdaTolerance;
}

std::uint64_t CountBits(const BitVector& bits) {
  return static_cast<std::uint64_t>(std::count(bits.begin(), bits.end(), true));
}

template <class Archive>
void SurrogateSettingsBase::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(ninputs_);
  ar& BOOST_SERIALIZATION_NVP(coord_transform_);
  ar& BOOST_SERIALIZATION_NVP(coord_transform_parameter_);
  ar& BOOST_SERIALIZATION_NVP(value_transform_);
  ar& BOOST_SERIALIZATION_NVP(value_transform_parameter_);
  ar& BOOST_SERIALIZATION_NVP(handle_failed_);
  ar& BOOST_SERIALIZATION_NVP(state_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(limit_transform_);
    ar& BOOST_SERIALIZATION_NVP(limit_transform_parameter_);
  }
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(input_names_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::SurrogateSettingsBase)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::SurrogateSettingsBase)
