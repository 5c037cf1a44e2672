#include "project/records/optimization_information.h"

#include "archive/instantiate.h"

#include <boost/make_shared.hpp>

namespace corvath::algorithm::datatypes {

boost::shared_ptr<DesignSet> OptimizationDesignSet::Clone() const {
  const auto copy = boost::make_shared<OptimizationDesignSet>(*this);
  copy->surrogate_infos_ = surrogate_infos_.Clone();
  return copy;
}

bool OptimizationDesignSet::IsEqual(const DesignSet& other) const {
  const auto* set = dynamic_cast<const OptimizationDesignSet*>(&other);
  return set && DesignSet::IsEqual(other) &&
         lower_upper_bounds_map_ == set->lower_upper_bounds_map_;
}

template <class Archive>
void OptimizationDesignSet::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("DesignSet",
                                     boost::serialization::base_object<DesignSet>(*this));
  ar& BOOST_SERIALIZATION_NVP(lower_upper_bounds_map_);
}

boost::shared_ptr<DetailedInformationBase> OptimizationInformation::Clone() const {
  return boost::make_shared<OptimizationInformation>(*this);
}

bool OptimizationInformation::IsEqual(
    const boost::shared_ptr<DetailedInformationBase>& other) const {
  const auto* info = dynamic_cast<const OptimizationInformation*>(other.get());
  return info && SystemsInformation::IsEqual(other) && best_design_ids_ == info->best_design_ids_;
}

boost::shared_ptr<DesignSet> OptimizationInformation::MakeDesignSet(
    const std::wstring& name) const {
  return boost::make_shared<OptimizationDesignSet>(name);
}

template <class Archive>
void OptimizationInformation::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("SystemsInformation",
                                     boost::serialization::base_object<SystemsInformation>(*this));
  ar& BOOST_SERIALIZATION_NVP(best_design_ids_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::OptimizationDesignSet)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::OptimizationInformation)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::OptimizationDesignSet)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::OptimizationInformation)
