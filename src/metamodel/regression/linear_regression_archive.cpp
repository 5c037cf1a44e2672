#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "metamodel/regression/linear_regression.h"

namespace corvath::math::metamodel {

template <class Archive>
void LinearRegression::save(Archive& ar, unsigned int) const {
  ar << boost::serialization::make_nvp("SurrogateBase",
                                       boost::serialization::base_object<SurrogateBase>(*this));
  ar << BOOST_SERIALIZATION_NVP(coefficients_) << BOOST_SERIALIZATION_NVP(coefficient_matrix_);
  ar << BOOST_SERIALIZATION_NVP(settings_);
}

template <class Archive>
void LinearRegression::load(Archive& ar, unsigned int version) {
  ar >> boost::serialization::make_nvp("SurrogateBase",
                                       boost::serialization::base_object<SurrogateBase>(*this));
  ar >> BOOST_SERIALIZATION_NVP(coefficients_) >> BOOST_SERIALIZATION_NVP(coefficient_matrix_);
  if (version >= 1) {
    ar >> BOOST_SERIALIZATION_NVP(settings_);
    return;
  }
  // Version 0 had no settings, only the terms and weights of its own.
  std::uint64_t order_ = 0;
  BitVector main_term_selection_;
  BitVector interaction_selection_;
  ar >> BOOST_SERIALIZATION_NVP(order_) >> BOOST_SERIALIZATION_NVP(main_term_selection_);
  ar >> BOOST_SERIALIZATION_NVP(interaction_selection_) >> BOOST_SERIALIZATION_NVP(weights_);
  const std::size_t num_inputs = static_cast<std::size_t>(GetNumberInputs());
  // Before an order from the file becomes that many bits.
  if (num_inputs == 0 ? !main_term_selection_.empty()
                      : main_term_selection_.size() % num_inputs != 0 ||
                            main_term_selection_.size() / num_inputs != order_)
    throw utils::runtime_error(
        L"size of main term selection vector is not consistent to regression order");
  settings_ = LinearRegressionSettings();
  RebuildSettings(settings_);
  settings_.SetOrder(order_);
  settings_.SetMainTermSelection(main_term_selection_);
  settings_.SetInteractionSelection(interaction_selection_);
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_LOAD_SAVE(corvath::math::metamodel::LinearRegression)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::LinearRegression)
