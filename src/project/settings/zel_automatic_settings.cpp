#include "project/settings/zel_automatic_settings.h"

#include "archive/instantiate.h"

#include <string>
#include <tuple>

namespace corvath::zel {

bool operator==(const ZELAutomaticSettings& a, const ZELAutomaticSettings& b) {
  const auto fields = [](const ZELAutomaticSettings& s) {
    return std::tie(s.model_complexity_, s.variables_reduction_, s.num_parallel_);
  };
  return fields(a) == fields(b);
}

template <class Archive>
void ZELAutomaticSettings::load(Archive& ar, unsigned int version) {
  ar >> BOOST_SERIALIZATION_NVP(model_complexity_);
  ar >> BOOST_SERIALIZATION_NVP(variables_reduction_);
  if (version < 1) {
    bool write_cv_values_ = false;
    std::wstring cv_values_suffix_;
    ar >> BOOST_SERIALIZATION_NVP(write_cv_values_);
    ar >> BOOST_SERIALIZATION_NVP(cv_values_suffix_);
  }
  ar >> BOOST_SERIALIZATION_NVP(num_parallel_);
  // Below version 2 the values 1 and 2 had each other's meaning.
  if (version < 2 && (variables_reduction_ == 1 || variables_reduction_ == 2))
    variables_reduction_ = eVariableReductionType(3 - variables_reduction_);
}

template <class Archive>
void ZELAutomaticSettings::save(Archive& ar, unsigned int) const {
  ar << BOOST_SERIALIZATION_NVP(model_complexity_);
  ar << BOOST_SERIALIZATION_NVP(variables_reduction_);
  ar << BOOST_SERIALIZATION_NVP(num_parallel_);
}

}  // namespace corvath::zel

ZEL_INSTANTIATE_LOAD_SAVE(corvath::zel::ZELAutomaticSettings)
ZEL_EXPORT_IMPLEMENT(corvath::zel::ZELAutomaticSettings)
