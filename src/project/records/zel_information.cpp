#include "project/records/zel_information.h"

#include "archive/instantiate.h"
#include "project/models/used_designs.h"
#include "project/records/legacy_conversion.h"

#include <boost/make_shared.hpp>

#include <tuple>

namespace corvath::algorithm::datatypes {
namespace {

template <class T>
bool SameObject(const boost::shared_ptr<T>& a, const boost::shared_ptr<T>& b) {
  return a == b || (a && b && *a == *b);
}

}  // namespace

boost::shared_ptr<DetailedInformationBase> ZELInformation::Clone() const {
  const auto copy = boost::make_shared<ZELInformation>(*this);
  copy->surrogate_infos_ = surrogate_infos_.Clone();
  if (calculated_models_)
    copy->calculated_models_ = boost::make_shared<SubspaceResultContainer>(*calculated_models_);
  if (best_models_)
    copy->best_models_ = best_models_ == calculated_models_
                             ? copy->calculated_models_
                             : boost::make_shared<SubspaceResultContainer>(*best_models_);
  return copy;
}

bool ZELInformation::IsEqual(const boost::shared_ptr<DetailedInformationBase>& other) const {
  const auto* info = dynamic_cast<const ZELInformation*>(other.get());
  const auto fields = [](const ZELInformation& i) {
    return std::tie(i.cv_indexes_, i.response_to_cv_mapping_, i.parameter_manager_,
                    i.surrogate_infos_, i.zel_settings_, i.num_samples_, i.parameter_names_,
                    i.sampling_limits_, i.defined_limits_, i.distribution_settings_,
                    i.function_strings_, i.relative_freq_of_importance_, i.custom_zel_logs_);
  };
  return info && DetailedInformationBase::IsEqual(other) && fields(*this) == fields(*info) &&
         SameObject(calculated_models_, info->calculated_models_) &&
         SameObject(best_models_, info->best_models_);
}

void ZELInformation::RecoverUsedDesigns(const DesignManager& designs,
                                        const ParameterManager& parameters) {
  datatypes::RecoverUsedDesigns(surrogate_infos_, designs, parameters,
                                {GetSamplingType() != kStochasticSampling, false, false});
}

void ZELInformation::ResetSupportData(const DesignManager&, const ParameterManager&) {
  if (GetSamplingType() != kUnknownSampling) surrogate_infos_.ResetSupportData();
}

void ZELInformation::RestoreSupportData(const DesignManager& designs,
                                        const ParameterManager& parameters) {
  if (GetSamplingType() != kUnknownSampling)
    surrogate_infos_.RestoreSupportData(designs, parameters, IsPlainSampling());
}

template <class Archive>
void ZELInformation::load(Archive& ar, unsigned int version) {
  ar >> boost::serialization::make_nvp(
            "DetailedInformationBase",
            boost::serialization::base_object<DetailedInformationBase>(*this));
  if (version < 4) {
    EntrySequence entries;
    ar >> boost::serialization::make_nvp("cv_indexes_", entries);
    cv_indexes_ = legacy::ToCvIndexes(entries);
  } else {
    ar >> BOOST_SERIALIZATION_NVP(cv_indexes_);
  }
  ar >> BOOST_SERIALIZATION_NVP(response_to_cv_mapping_);
  if (version >= 1) ar >> BOOST_SERIALIZATION_NVP(parameter_manager_);
  if (version >= 2) ar >> BOOST_SERIALIZATION_NVP(surrogate_infos_);
  if (version >= 3 && version < 7) {
    bool was_deterministic_sampling_ = false;
    ar >> BOOST_SERIALIZATION_NVP(was_deterministic_sampling_);
    SetSamplingType(was_deterministic_sampling_ ? kDeterministicSampling : kStochasticSampling);
  }
  if (version >= 5) ar >> BOOST_SERIALIZATION_NVP(zel_settings_);
  if (version >= 6) {
    ar >> BOOST_SERIALIZATION_NVP(num_samples_);
    ar >> BOOST_SERIALIZATION_NVP(parameter_names_);
    ar >> BOOST_SERIALIZATION_NVP(sampling_limits_);
    ar >> BOOST_SERIALIZATION_NVP(defined_limits_);
    ar >> BOOST_SERIALIZATION_NVP(distribution_settings_);
    ar >> BOOST_SERIALIZATION_NVP(calculated_models_);
    ar >> BOOST_SERIALIZATION_NVP(best_models_);
    ar >> BOOST_SERIALIZATION_NVP(function_strings_);
    if (version < 9) {
      std::vector<std::wstring> polynomial_info_;
      ar >> BOOST_SERIALIZATION_NVP(polynomial_info_);
    }
    ar >> BOOST_SERIALIZATION_NVP(relative_freq_of_importance_);
  }
  if (version >= 8) ar >> BOOST_SERIALIZATION_NVP(custom_zel_logs_);
}

template <class Archive>
void ZELInformation::save(Archive& ar, unsigned int) const {
  ar << boost::serialization::make_nvp(
      "DetailedInformationBase", boost::serialization::base_object<DetailedInformationBase>(*this));
  ar << BOOST_SERIALIZATION_NVP(cv_indexes_);
  ar << BOOST_SERIALIZATION_NVP(response_to_cv_mapping_);
  ar << BOOST_SERIALIZATION_NVP(parameter_manager_);
  ar << BOOST_SERIALIZATION_NVP(surrogate_infos_);
  ar << BOOST_SERIALIZATION_NVP(zel_settings_);
  ar << BOOST_SERIALIZATION_NVP(num_samples_);
  ar << BOOST_SERIALIZATION_NVP(parameter_names_);
  ar << BOOST_SERIALIZATION_NVP(sampling_limits_);
  ar << BOOST_SERIALIZATION_NVP(defined_limits_);
  ar << BOOST_SERIALIZATION_NVP(distribution_settings_);
  ar << BOOST_SERIALIZATION_NVP(calculated_models_);
  ar << BOOST_SERIALIZATION_NVP(best_models_);
  ar << BOOST_SERIALIZATION_NVP(function_strings_);
  ar << BOOST_SERIALIZATION_NVP(relative_freq_of_importance_);
  ar << BOOST_SERIALIZATION_NVP(custom_zel_logs_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::ZELInformation)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::ZELInformation)
