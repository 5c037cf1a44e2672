#include "archive/instantiate.h"
#include "metamodel/kernels/stored_kernel.h"
#include "metamodel/kriging/ordinary_kriging.h"

#include <exception>
#include <new>

namespace corvath::math::metamodel {

template <class Archive>
void OrdinaryKriging::save(Archive& ar, unsigned int /*version*/) const {
  ar << boost::serialization::make_nvp("SurrogateBase",
                                       boost::serialization::base_object<SurrogateBase>(*this));
  ar << BOOST_SERIALIZATION_NVP(mean_) << BOOST_SERIALIZATION_NVP(sigma2_);
  ar << BOOST_SERIALIZATION_NVP(kernel_weights_) << BOOST_SERIALIZATION_NVP(settings_);
  ar << BOOST_SERIALIZATION_NVP(values_trans_);
}

template <class Archive>
void OrdinaryKriging::load(Archive& ar, unsigned int version) {
  ar >> boost::serialization::make_nvp("SurrogateBase",
                                       boost::serialization::base_object<SurrogateBase>(*this));
  if (version == 0) {
    LoadVersion0(ar);
    return;
  }
  ar >> BOOST_SERIALIZATION_NVP(mean_) >> BOOST_SERIALIZATION_NVP(sigma2_);
  ar >> BOOST_SERIALIZATION_NVP(kernel_weights_) >> BOOST_SERIALIZATION_NVP(settings_);
  if (version == 1) ar >> BOOST_SERIALIZATION_NVP(points_trans_reduced_);
  ar >> BOOST_SERIALIZATION_NVP(values_trans_);
}

/// The oldest form held its kernel as an object, and neither settings nor transformed values.
template <class Archive>
void OrdinaryKriging::LoadVersion0(Archive& ar) {
  const boost::shared_ptr<KernelBase> kernel = LoadStoredKernel(ar, "kernel_");
  double nugget_ = 0.0;
  ar >> BOOST_SERIALIZATION_NVP(mean_) >> BOOST_SERIALIZATION_NVP(sigma2_);
  ar >> BOOST_SERIALIZATION_NVP(nugget_) >> BOOST_SERIALIZATION_NVP(kernel_weights_);
  settings_ = OrdinaryKrigingSettings(static_cast<std::uint64_t>(GetNumberInputs()));
  RebuildSettings(settings_);
  settings_.SetNugget(nugget_);
  if (kernel) {
    settings_.SetKernelType(kernel->GetType());
    settings_.SetKernelParameter(kernel->GetParameters());
  }
  values_trans_.resize(0);
  // The base did not store them either; predictions rest on them.
  if (points_trans_reduced_.size() != 0 || NeedsBuild(trans_coord_)) return;
  try {
    points_trans_reduced_ = trans_coord_ ? trans_coord_->Forward(*points_) : *points_;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    // Points that do not fit their transform: the model is refused when it is used.
  }
}

}  // namespace corvath::math::metamodel

ZEL_INSTANTIATE_LOAD_SAVE(corvath::math::metamodel::OrdinaryKriging)
ZEL_EXPORT_IMPLEMENT(corvath::math::metamodel::OrdinaryKriging)
