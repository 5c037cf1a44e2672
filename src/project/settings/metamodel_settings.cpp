#include "project/settings/metamodel_settings.h"

#include "archive/instantiate.h"
#include "project/settings/settings_equality.h"

#include <boost/serialization/variant.hpp>

#include <typeinfo>

namespace corvath::math::metamodel {
namespace {

template <class Equal>
bool SameFields(const MetamodelSettings& a, const MetamodelSettings& b, const Equal& equal) {
  using S = MetamodelSettings;
  return typeid(a) == typeid(b) &&
         MembersEqual(a, b, equal, &S::use_boxcox_, &S::use_interpolation_, &S::use_polynomials_,
                      &S::max_order_polynomial_, &S::use_MLS_, &S::max_order_MLS_,
                      &S::use_anisotropic_MLS_, &S::use_Kriging_, &S::use_anisotropic_Kriging_,
                      &S::use_ASCMO_, &S::testing_type_, &S::coeff_factor_poly_,
                      &S::coeff_factor_mls_, &S::coeff_factor_kriging_, &S::coeff_factor_ASCMO_,
                      &S::custom_, &S::use_limits_) &&
         equal.Limits(a.limits_, b.limits_) &&
         MembersEqual(a, b, equal, &S::custom_settings_, &S::skv_variables_);
}

}  // namespace

std::unique_ptr<MetamodelSettings> MetamodelSettings::Clone() const {
  return std::make_unique<MetamodelSettings>(*this);
}

bool MetamodelSettings::IsNearlyEqual(const MetamodelSettings& other) const {
  return SameFields(*this, other, NearlyEqual());
}

bool MetamodelSettings::IsEqual(const MetamodelSettings& other) const {
  return SameFields(*this, other, ExactlyEqual());
}

template <class Archive>
void MetamodelSettings::serialize(Archive& ar, unsigned int version) {
  ar& BOOST_SERIALIZATION_NVP(use_boxcox_);
  ar& BOOST_SERIALIZATION_NVP(use_interpolation_);
  ar& BOOST_SERIALIZATION_NVP(use_polynomials_);
  ar& BOOST_SERIALIZATION_NVP(max_order_polynomial_);
  ar& BOOST_SERIALIZATION_NVP(use_MLS_);
  ar& BOOST_SERIALIZATION_NVP(max_order_MLS_);
  ar& BOOST_SERIALIZATION_NVP(use_anisotropic_MLS_);
  ar& BOOST_SERIALIZATION_NVP(use_Kriging_);
  ar& BOOST_SERIALIZATION_NVP(use_anisotropic_Kriging_);
  ar& BOOST_SERIALIZATION_NVP(use_ASCMO_);
  ar& BOOST_SERIALIZATION_NVP(testing_type_);
  if (version >= 1) {
    ar& BOOST_SERIALIZATION_NVP(coeff_factor_poly_);
    ar& BOOST_SERIALIZATION_NVP(coeff_factor_mls_);
    ar& BOOST_SERIALIZATION_NVP(coeff_factor_kriging_);
    ar& BOOST_SERIALIZATION_NVP(coeff_factor_ASCMO_);
  }
  if (version >= 2) ar& BOOST_SERIALIZATION_NVP(custom_);
  if (version >= 3) {
    ar& BOOST_SERIALIZATION_NVP(use_limits_);
    ar& BOOST_SERIALIZATION_NVP(limits_);
  }
  if (version >= 4) {
    ar& BOOST_SERIALIZATION_NVP(custom_settings_);
    ar& BOOST_SERIALIZATION_NVP(skv_variables_);
  }
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_SERIALIZE(corvath::math::metamodel::MetamodelSettings)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::MetamodelSettings)
