#include "project/settings/zel_advanced_settings.h"

#include "archive/instantiate.h"

#include <tuple>

namespace corvath::zel {

bool operator==(const ZELAdvancedSettings& a, const ZELAdvancedSettings& b) {
  const auto fields = [](const ZELAdvancedSettings& s) {
    return std::tie(s.num_parallel_, s.use_incomplete_, s.adapt_bounds_,
                    s.adapt_bounds_safety_factor_, s.custom_surrogates_, s.log_in_project_log_,
                    s.log_in_file_, s.log_file_path_, s.write_function_string_, s.write_cv_values_,
                    s.cv_values_suffix_, s.zel_custom_id_settings_container_,
                    s.zel_custom_id_usage_container_, s.export_fmu_);
  };
  return fields(a) == fields(b) && a.pzel_settings_.IsEqual(b.pzel_settings_);
}

template <class Archive>
void ZELAdvancedSettings::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(num_parallel_);
  ar& BOOST_SERIALIZATION_NVP(use_incomplete_);
  ar& BOOST_SERIALIZATION_NVP(adapt_bounds_);
  ar& BOOST_SERIALIZATION_NVP(adapt_bounds_safety_factor_);
  ar& BOOST_SERIALIZATION_NVP(pzel_settings_);
  ar& BOOST_SERIALIZATION_NVP(custom_surrogates_);
  ar& BOOST_SERIALIZATION_NVP(log_in_project_log_);
  ar& BOOST_SERIALIZATION_NVP(log_in_file_);
  ar& BOOST_SERIALIZATION_NVP(log_file_path_);
  ar& BOOST_SERIALIZATION_NVP(write_function_string_);
  ar& BOOST_SERIALIZATION_NVP(write_cv_values_);
  ar& BOOST_SERIALIZATION_NVP(cv_values_suffix_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(zel_custom_id_settings_container_);
    ar& BOOST_SERIALIZATION_NVP(zel_custom_id_usage_container_);
  }
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(export_fmu_);
  if (version < 1 && log_file_path_.empty()) log_file_path_ = kDefaultLogFile;
}

}  // namespace corvath::zel

ZEL_INSTANTIATE_SERIALIZE(corvath::zel::ZELAdvancedSettings)
ZEL_EXPORT_IMPLEMENT(corvath::zel::ZELAdvancedSettings)
