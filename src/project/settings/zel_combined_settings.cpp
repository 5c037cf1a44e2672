#include "project/settings/zel_combined_settings.h"

#include "archive/instantiate.h"
#include "project/settings/zel_classic_settings.h"

#include <tuple>

namespace corvath::zel {

bool operator==(const ZELCombinedSettings& a, const ZELCombinedSettings& b) {
  const auto fields = [](const ZELCombinedSettings& s) {
    return std::tie(s.settings_type_, s.data_, s.show_pp_, s.automatic_settings_,
                    s.advanced_settings_, s.default_parameter_bounds_adjustment_min_,
                    s.default_parameter_bounds_adjustment_max_, s.limits_);
  };
  return fields(a) == fields(b);
}

template <class Archive>
void ZELCombinedSettings::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(settings_type_);
  ar& BOOST_SERIALIZATION_NVP(data_);
  ar& BOOST_SERIALIZATION_NVP(show_pp_);
  ar& BOOST_SERIALIZATION_NVP(automatic_settings_);
  if (version < 1) {
    ZELClassicSettings classic_settings_;
    ar& BOOST_SERIALIZATION_NVP(classic_settings_);
  }
  ar& BOOST_SERIALIZATION_NVP(advanced_settings_);
  ar& BOOST_SERIALIZATION_NVP(default_parameter_bounds_adjustment_min_);
  ar& BOOST_SERIALIZATION_NVP(default_parameter_bounds_adjustment_max_);
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(limits_);
}

}  // namespace corvath::zel

ZEL_INSTANTIATE_SERIALIZE(corvath::zel::ZELCombinedSettings)
ZEL_EXPORT_IMPLEMENT(corvath::zel::ZELCombinedSettings)
