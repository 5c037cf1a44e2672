#include "metamodel/transforms/trans_limits.h"

#include "archive/instantiate.h"
#include "foundation/text_stream.h"

#include <stdexcept>

namespace corvath::math::transform {

bool TransLimits::Build(const Eigen::Ref<const Eigen::MatrixXd>&) {
  if (!(lower_limit_ < upper_limit_))
    throw std::runtime_error("Minimum limit should be less than maximum.");
  need_build_ = false;
  return true;
}

void TransLimits::BackwardInPlace(Eigen::Ref<Eigen::MatrixXd> data) const {
  RequireBuilt();
  data = data.unaryExpr([this](double value) {
    if (value < lower_limit_) return lower_limit_;
    return value > upper_limit_ ? upper_limit_ : value;  // a NaN passes both comparisons
  });
}

std::wstring TransLimits::GetName() const {
  utils::WideTextStream name;
  name << L"Limits (" << lower_limit_ << L", " << upper_limit_ << L")";
  return name.str();
}

bool TransLimits::Equals(const Transform& other) const {
  if (!Transform::Equals(other)) return false;
  const auto* same = dynamic_cast<const TransLimits*>(&other);
  return same && lower_limit_ == same->lower_limit_ && upper_limit_ == same->upper_limit_;
}

template <class Archive>
void TransLimits::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp("Transform",
                                     boost::serialization::base_object<Transform>(*this));
  ar& BOOST_SERIALIZATION_NVP(lower_limit_) & BOOST_SERIALIZATION_NVP(upper_limit_);
}

}  // namespace corvath::math::transform

ZEL_INSTANTIATE_SERIALIZE(corvath::math::transform::TransLimits)
ZEL_EXPORT_IMPLEMENT(corvath::math::transform::TransLimits)
