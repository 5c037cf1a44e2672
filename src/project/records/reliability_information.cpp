#include "project/records/reliability_information.h"

#include "archive/instantiate.h"
#include "project/records/legacy_conversion.h"

#include <boost/make_shared.hpp>

#include <tuple>

namespace corvath::algorithm::datatypes {

template <class Archive>
void ReliabilityDesignSetInfo::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(safe_domain_designs_);
  ar& BOOST_SERIALIZATION_NVP(unsafe_domain_designs_);
  ar& BOOST_SERIALIZATION_NVP(failed_strings_);
  ar& BOOST_SERIALIZATION_NVP(unsuccessful_designs_);
  ar& BOOST_SERIALIZATION_NVP(total_designs_);
  if (version < 6)
    ar& boost::serialization::make_nvp("iteration_complete_", design_set_complete_);
  else
    ar& BOOST_SERIALIZATION_NVP(design_set_complete_);
  ar& BOOST_SERIALIZATION_NVP(most_probable_failure_point_id_);
  ar& BOOST_SERIALIZATION_NVP(probability_of_failure_);
  ar& BOOST_SERIALIZATION_NVP(standard_deviation_error_);
  ar& BOOST_SERIALIZATION_NVP(reliability_index_);
  ar& BOOST_SERIALIZATION_NVP(probability_of_failure_form_);
  ar& BOOST_SERIALIZATION_NVP(reliability_index_form_);
  ar& BOOST_SERIALIZATION_NVP(method_name_);
  ar& BOOST_SERIALIZATION_NVP(error_r2_);
  ar& BOOST_SERIALIZATION_NVP(error_loo_);
  if (version < 5) ar& BOOST_SERIALIZATION_NVP(history_map_);
  if (version >= 2) {
    ar& BOOST_SERIALIZATION_NVP(arsm_ds_map_);
    ar& BOOST_SERIALIZATION_NVP(arsm_ds_types_);
  }
  if (version >= 3) ar& BOOST_SERIALIZATION_NVP(has_valid_data_);
}

boost::shared_ptr<DesignSet> ReliabilityDesignSet::Clone() const {
  const auto copy = boost::make_shared<ReliabilityDesignSet>(*this);
  copy->surrogate_infos_ = surrogate_infos_.Clone();
  return copy;
}

bool ReliabilityDesignSet::IsEqual(const DesignSet& other) const {
  const auto* set = dynamic_cast<const ReliabilityDesignSet*>(&other);
  const auto fields = [](const ReliabilityDesignSet& s) {
    return std::tie(s.probability_of_failure_, s.standard_deviation_error_, s.reliability_index_,
                    s.num_total_dir_, s.num_done_dir_, s.arsm_approx_errors_,
                    s.input_importance_values_);
  };
  return set && DesignSet::IsEqual(other) && fields(*this) == fields(*set);
}

template <class Archive>
void ReliabilityDesignSet::serialize(Archive& ar, unsigned int version) {
  ar& boost::serialization::make_nvp("DesignSet",
                                     boost::serialization::base_object<DesignSet>(*this));
  ar& BOOST_SERIALIZATION_NVP(probability_of_failure_);
  ar& BOOST_SERIALIZATION_NVP(standard_deviation_error_);
  ar& BOOST_SERIALIZATION_NVP(reliability_index_);
  ar& BOOST_SERIALIZATION_NVP(num_total_dir_);
  ar& BOOST_SERIALIZATION_NVP(num_done_dir_);
  ar& BOOST_SERIALIZATION_NVP(arsm_approx_errors_);
  if (version >= 1) ar& BOOST_SERIALIZATION_NVP(input_importance_values_);
}

boost::shared_ptr<DetailedInformationBase> ReliabilityInformation::Clone() const {
  return boost::make_shared<ReliabilityInformation>(*this);
}

bool ReliabilityInformation::IsEqual(
    const boost::shared_ptr<DetailedInformationBase>& other) const {
  const auto* info = dynamic_cast<const ReliabilityInformation*>(other.get());
  const auto fields = [](const ReliabilityInformation& i) {
    return std::tie(i.reli_method_name_, i.is_converged_, i.num_total_it_, i.num_done_it_,
                    i.is_form_converged_);
  };
  return info && SystemsInformation::IsEqual(other) && fields(*this) == fields(*info);
}

boost::shared_ptr<DesignSet> ReliabilityInformation::MakeDesignSet(const std::wstring& name) const {
  return boost::make_shared<ReliabilityDesignSet>(name);
}

template <class Archive>
void ReliabilityInformation::load(Archive& ar, unsigned int version) {
  ar >> boost::serialization::make_nvp(
            "SystemsInformation", boost::serialization::base_object<SystemsInformation>(*this));
  if (version < 3) {
    std::pair<std::uint64_t, std::uint64_t> complete_directions_pair_;
    ReliabilityDesignSetInfo reli_total_infos_;
    ReliabilityDesignSetInfo stndrd_reli_infos_;
    std::map<std::wstring, ReliabilityDesignSetInfo> infos;
    std::map<DesignId, eALGOINFO_DESIGNTYPE> types;
    ar >> BOOST_SERIALIZATION_NVP(complete_directions_pair_);
    ar >> BOOST_SERIALIZATION_NVP(reli_total_infos_);
    ar >> BOOST_SERIALIZATION_NVP(stndrd_reli_infos_);
    const bool is_old = version < 2;  // the same maps had other names
    const char* const infos_key = is_old ? "reli_iteration_infos_" : "reli_design_set_infos_";
    const char* const types_key = is_old ? "design_iteration_map_" : "design_type_map_";
    ar >> boost::serialization::make_nvp(infos_key, infos);
    ar >> boost::serialization::make_nvp(types_key, types);
    reli_method_name_ = reli_total_infos_.method_name_;
    for (const auto& [name, info] : infos)
      design_sets_map_[name] = legacy::ToReliabilityDesignSet(name, design_sets_map_[name], info);
    return;
  }
  ar >> BOOST_SERIALIZATION_NVP(reli_method_name_);
  ar >> BOOST_SERIALIZATION_NVP(is_converged_);
  ar >> BOOST_SERIALIZATION_NVP(num_total_it_);
  ar >> BOOST_SERIALIZATION_NVP(num_done_it_);
  if (version >= 6) ar >> BOOST_SERIALIZATION_NVP(is_form_converged_);
}

template <class Archive>
void ReliabilityInformation::save(Archive& ar, unsigned int) const {
  ar << boost::serialization::make_nvp(
      "SystemsInformation", boost::serialization::base_object<SystemsInformation>(*this));
  ar << BOOST_SERIALIZATION_NVP(reli_method_name_);
  ar << BOOST_SERIALIZATION_NVP(is_converged_);
  ar << BOOST_SERIALIZATION_NVP(num_total_it_);
  ar << BOOST_SERIALIZATION_NVP(num_done_it_);
  ar << BOOST_SERIALIZATION_NVP(is_form_converged_);
}

}  // namespace corvath::algorithm::datatypes

ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::ReliabilityDesignSetInfo)
ZEL_INSTANTIATE_SERIALIZE(corvath::algorithm::datatypes::ReliabilityDesignSet)
ZEL_INSTANTIATE_LOAD_SAVE(corvath::algorithm::datatypes::ReliabilityInformation)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::ReliabilityDesignSetInfo)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::ReliabilityDesignSet)
ZEL_EXPORT_IMPLEMENT(corvath::algorithm::datatypes::ReliabilityInformation)
