#include "project/records/zel3_information.h"

#include "archive/instantiate.h"

#include <boost/make_shared.hpp>

#include <tuple>

namespace corvath::algorithm::datatypes {
namespace {

bool SameMatrix(const Eigen::MatrixXd& a, const Eigen::MatrixXd& b) {
  return a.rows() == b.rows() && a.cols() == b.cols() && a == b;
}

}  // namespace

boost::shared_ptr<DetailedInformationBase> ZEL3Information::Clone() const {
  const auto copy = boost::make_shared<ZEL3Information>(*this);
  copy->surrogate_infos_.reset();
  return copy;
}

bool ZEL3Information::IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const {
  const auto* info = dynamic_cast<const ZEL3Information*>(other.get());
  const auto fields = [](const ZEL3Information& i) {
    return std::tie(i.zel3_sdb_, i.zel3_configuration_, i.zel3_design_ids_,
                    i.zel3_parameter_manager_);
  };
  return info && DetailedInformationBase::IsEqual(other) && fields(*this) == fields(*info) &&
         SameMatrix(zel3_support_points_, info->zel3_support_points_) &&
         SameMatrix(zel3_responses_, info->zel3_responses_);
}

SurrogateInfoContainer& ZEL3Information::GetSurrogateInfos() {
  if (!surrogate_infos_) surrogate_infos_ = boost::make_shared<SurrogateInfoContainer>();
  return *surrogate_infos_;
}

template <class Archive>
void ZEL3Information::serialize(Archive& ar, unsigned int) {
  ar& boost::serialization::make_nvp(
      "DetailedInformationBase", boost::serialization::base_object<DetailedInformationBase>(*this));
  ar& BOOST_SERIALIZATION_NVP(zel3_sdb_);
  ar& BOOST_SERIALIZATION_NVP(zel3_configuration_);
  ar& BOOST_SERIALIZATION_NVP(zel3_support_points_);
  ar& BOOST_SERIALIZATION_NVP(zel3_responses_);
  ar& BOOST_SERIALIZATION_NVP(zel3_design_ids_);
  ar& BOOST_SERIALIZATION_NVP(zel3_parameter_manager_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::ZEL3Information)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::ZEL3Information)
