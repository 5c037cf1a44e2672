#include "project/records/detailed_information.h"

#include "archive/instantiate.h"

#include <boost/make_shared.hpp>

namespace corvath::algorithm::datatypes {

boost::shared_ptr<DetailedInformationBase> DetailedInformationBase::Clone() const {
  return boost::make_shared<DetailedInformationBase>(*this);
}

bool DetailedInformationBase::IsEqual(
    const boost::shared_ptr<DetailedInformationBase>& other) const {
  return other && sampling_type_ == other->sampling_type_;
}

void DetailedInformationBase::RecoverUsedDesigns(const DesignManager&, const ParameterManager&) {}
void DetailedInformationBase::ResetSupportData(const DesignManager&, const ParameterManager&) {}
void DetailedInformationBase::RestoreSupportData(const DesignManager&, const ParameterManager&) {}
void DetailedInformationBase::SetFileContext(const boost::filesystem::path&,
                                             const boost::filesystem::path&) {}

template <class Archive>
void DetailedInformationBase::serialize(Archive& ar, unsigned int version) {
  if (version >= 1) ar& BOOST_SERIALIZATION_NVP(sampling_type_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::DetailedInformationBase)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::DetailedInformationBase)
