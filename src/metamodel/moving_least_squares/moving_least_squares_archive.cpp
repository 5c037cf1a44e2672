#include "archive/instantiate.h"
#include "foundation/exception.h"
#include "metamodel/kernels/stored_kernel.h"
#include "metamodel/moving_least_squares/moving_least_squares.h"

namespace corvath::math::metamodel {

template <class Archive>
void MovingLeastSquares::save(Archive& ar, unsigned int /*version*/) const {
  ar << boost::serialization::make_nvp("SurrogateBase",
                                       boost::serialization::base_object<SurrogateBase>(*this));
  ar << BOOST_SERIALIZATION_NVP(values_trans_) << BOOST_SERIALIZATION_NVP(coefficient_matrix_);
  ar << BOOST_SERIALIZATION_NVP(settings_);
}

template <class Archive>
void MovingLeastSquares::load(Archive& ar, unsigned int version) {
  ar >> boost::serialization::make_nvp("SurrogateBase",
                                       boost::serialization::base_object<SurrogateBase>(*this));
  if (version == 0) {
    LoadVersion0(ar);
  } else {
    if (version == 2) ar >> BOOST_SERIALIZATION_NVP(points_trans_reduced_);
    if (version >= 2) ar >> BOOST_SERIALIZATION_NVP(values_trans_);
    ar >> BOOST_SERIALIZATION_NVP(coefficient_matrix_) >> BOOST_SERIALIZATION_NVP(settings_);
  }
  if (version < 3) CompleteOldForm();
}

/// The oldest form held its kernel as an object, and no settings.
template <class Archive>
void MovingLeastSquares::LoadVersion0(Archive& ar) {
  const boost::shared_ptr<KernelBase> weight_ = LoadStoredKernel(ar, "weight_");
  std::uint64_t order_ = 0;
  BitVector main_term_selection_;
  ar >> BOOST_SERIALIZATION_NVP(coefficient_matrix_) >> BOOST_SERIALIZATION_NVP(order_);
  ar >> BOOST_SERIALIZATION_NVP(main_term_selection_);
  if (order_ > 2) throw utils::runtime_error(L"can not set mls order >2");
  settings_ = MovingLeastSquaresSettings();
  RebuildSettings(settings_);
  settings_.SetOrder(order_);
  if (main_term_selection_.size() != settings_.GetMainTermSelection().size())
    throw utils::runtime_error(L"size of selection vector is not consistent to order");
  settings_.SetMainTermSelection(main_term_selection_);
  if (!weight_) return;
  settings_.SetKernelType(weight_->GetType());
  settings_.SetKernelParameter(weight_->GetParameters());
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_LOAD_SAVE(corvath::math::metamodel::MovingLeastSquares)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::MovingLeastSquares)
