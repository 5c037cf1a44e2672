#pragma once

/// For the .cpp file of each distribution, which ends with ZEL_DISTRIBUTION(Class).

#include "archive/instantiate.h"
#include "stochastics/rv_factory.h"

namespace corvath::algorithm {

template <class Derived, enums::RandomVariable::eType kId, Support kSupport, bool kDiscrete>
template <class Archive>
void RVType<Derived, kId, kSupport, kDiscrete>::serialize(Archive& ar, const unsigned int) {
  auto& derived = static_cast<Derived&>(*this);
  ar& boost::serialization::make_nvp("RV", boost::serialization::base_object<RV>(derived));
  derived.SerializeFurther(ar);
  if (Archive::is_loading::value)
    RequireSizes(derived.NumParameters(), static_cast<Eigen::Index>(this->GetMomentNames().size()));
}

template <class Type>
boost::shared_ptr<RV> MakePrototype() {
  return boost::make_shared<Type>();
}

}  // namespace corvath::algorithm

/// Registers the type with the factory and, under its export key, with the archives. Outside all
/// namespaces.
#define ZEL_DISTRIBUTION(Class)                                   \
  template boost::shared_ptr<corvath::algorithm::RV>              \
  corvath::algorithm::MakePrototype<corvath::algorithm::Class>(); \
  ZEL_EXPORT_IMPLEMENT(corvath::algorithm::Class)
