#include "metamodel/transforms/transform.h"

#include "archive/instantiate.h"

#include <stdexcept>

namespace corvath::math::transform {

void Transform::RequireBuilt() const {
  if (need_build_) throw std::logic_error("can not transform - build first");
}

template <class Archive>
void Transform::serialize(Archive& ar, unsigned int) {
  ar& BOOST_SERIALIZATION_NVP(need_build_);
}

}  // namespace corvath::math::transform

ZEL_INSTANTIATE_SERIALIZE(corvath::math::transform::Transform)
ZEL_EXPORT_IMPLEMENT(corvath::math::transform::Transform)
