#include "project/attached_path.h"

#include "archive/instantiate.h"

namespace corvath::algorithm::datatypes {

template <class Archive>
void VRDBAttachedPath::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(path_);
  ar& BOOST_SERIALIZATION_NVP(title_);
  ar& BOOST_SERIALIZATION_NVP(isPathFix_);
  if (version >= 1) ar& BOOST_SERIALIZATION_NVP(arguments_);
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(autoInsertPlaceholders_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::VRDBAttachedPath)
