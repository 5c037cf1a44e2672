#include "project/settings/zel_classic_settings.h"

#include "archive/instantiate.h"

#include <cstdint>

namespace corvath::zel {

template <class Archive>
void ZELClassicSettings::serialize(Archive& ar, unsigned int) {
  double delta_cop_ = 0.0;
  bool signi_filter_ = false;
  bool corr_filter_ = false;
  bool coi_filter_ = false;
  double min_signi_quantil_ = 0.0;
  std::uint64_t corr_steps_ = 0;
  double max_coi_ = 0.0;
  bool spearman_ = false;
  bool adjusted_ = false;
  bool cross_validation_ = false;
  double splitting_ratio_ = 0.0;
  bool polynom_ = false;
  bool cmls_ = false;
  bool imls_ = false;
  bool adapt_bounds_ = false;
  ar& BOOST_SERIALIZATION_NVP(delta_cop_);
  ar& BOOST_SERIALIZATION_NVP(signi_filter_);
  ar& BOOST_SERIALIZATION_NVP(corr_filter_);
  ar& BOOST_SERIALIZATION_NVP(coi_filter_);
  ar& BOOST_SERIALIZATION_NVP(min_signi_quantil_);
  ar& BOOST_SERIALIZATION_NVP(corr_steps_);
  ar& BOOST_SERIALIZATION_NVP(max_coi_);
  ar& BOOST_SERIALIZATION_NVP(spearman_);
  ar& BOOST_SERIALIZATION_NVP(adjusted_);
  ar& BOOST_SERIALIZATION_NVP(cross_validation_);
  ar& BOOST_SERIALIZATION_NVP(splitting_ratio_);
  ar& BOOST_SERIALIZATION_NVP(polynom_);
  ar& BOOST_SERIALIZATION_NVP(cmls_);
  ar& BOOST_SERIALIZATION_NVP(imls_);
  ar& BOOST_SERIALIZATION_NVP(adapt_bounds_);
}

}  // namespace corvath::zel

ZEL_INSTANTIATE_SERIALIZE(corvath::zel::ZELClassicSettings)
ZEL_EXPORT_IMPLEMENT(corvath::zel::ZELClassicSettings)
