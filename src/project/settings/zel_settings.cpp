#include "project/settings/zel_settings.h"

#include "archive/instantiate.h"
#include "project/settings/settings_equality.h"

namespace corvath::math::metamodel {
namespace {

template <class Equal>
bool SameOwnFields(const ZELSettings& a, const MetamodelSettings& other, const Equal& equal) {
  using S = ZELSettings;
  const auto* b = dynamic_cast<const ZELSettings*>(&other);
  return b && a.info_important_.size() == b->info_important_.size() &&
         a.info_important_ == b->info_important_ &&
         MembersEqual(a, *b, equal, &S::use_significance_filter_, &S::min_significance_,
                      &S::step_significance_, &S::use_spearman_, &S::use_coi_filter_, &S::max_CoI_,
                      &S::step_CoI_, &S::use_adj_cod_, &S::use_cod_filter_, &S::max_CoD_,
                      &S::step_CoD_, &S::use_corr_filter_, &S::num_corr_steps_,
                      &S::toleranceCoP_model_, &S::toleranceCoP_variables_,
                      &S::use_input_corr_filter_, &S::corr_input_check_, &S::min_input_corr_,
                      &S::max_input_corr_, &S::use_adj_cop_, &S::use_uniform_resample_);
}

}  // namespace

std::unique_ptr<MetamodelSettings> ZELSettings::Clone() const {
  return std::make_unique<ZELSettings>(*this);
}

bool ZELSettings::IsNearlyEqual(const MetamodelSettings& other) const {
  return MetamodelSettings::IsNearlyEqual(other) && SameOwnFields(*this, other, NearlyEqual());
}

bool ZELSettings::IsEqual(const MetamodelSettings& other) const {
  return MetamodelSettings::IsEqual(other) && SameOwnFields(*this, other, ExactlyEqual());
}

template <class Archive>
void ZELSettings::serialize(Archive& ar, unsigned int version) {
  ar& boost::serialization::make_nvp("MetamodelSettings",
                                     boost::serialization::base_object<MetamodelSettings>(*this));
  ar& BOOST_SERIALIZATION_NVP(info_important_);
  ar& BOOST_SERIALIZATION_NVP(use_significance_filter_);
  ar& BOOST_SERIALIZATION_NVP(min_significance_);
  ar& BOOST_SERIALIZATION_NVP(step_significance_);
  ar& BOOST_SERIALIZATION_NVP(use_spearman_);
  ar& BOOST_SERIALIZATION_NVP(use_coi_filter_);
  ar& BOOST_SERIALIZATION_NVP(max_CoI_);
  ar& BOOST_SERIALIZATION_NVP(step_CoI_);
  ar& BOOST_SERIALIZATION_NVP(use_adj_cod_);
  ar& BOOST_SERIALIZATION_NVP(use_cod_filter_);
  ar& BOOST_SERIALIZATION_NVP(max_CoD_);
  ar& BOOST_SERIALIZATION_NVP(step_CoD_);
  ar& BOOST_SERIALIZATION_NVP(use_corr_filter_);
  ar& BOOST_SERIALIZATION_NVP(num_corr_steps_);
  ar& BOOST_SERIALIZATION_NVP(toleranceCoP_model_);
  ar& BOOST_SERIALIZATION_NVP(toleranceCoP_variables_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(use_input_corr_filter_);
    ar& BOOST_SERIALIZATION_NVP(corr_input_check_);
    ar& BOOST_SERIALIZATION_NVP(min_input_corr_);
    ar& BOOST_SERIALIZATION_NVP(max_input_corr_);
    ar& BOOST_SERIALIZATION_NVP(use_adj_cop_);
  }
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(use_uniform_resample_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::ZELSettings)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::ZELSettings)
