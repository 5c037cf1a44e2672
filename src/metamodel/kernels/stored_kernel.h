#pragma once

#include "archive/instantiate.h"
#include "metamodel/kernels/kernel.h"

#include <boost/serialization/shared_ptr.hpp>

namespace corvath::math::metamodel {

/// Reads the plain pointer to a kernel that the oldest models stored. Other models may point to the
/// same kernel; the archive's helper keeps one count for it.
template <class Archive>
boost::shared_ptr<KernelBase> LoadStoredKernel(Archive& ar, const char* name) {
  namespace bs = boost::serialization;
  KernelBase* stored = nullptr;
  ar >> bs::make_nvp(name, stored);
  boost::shared_ptr<KernelBase> kernel;
  ar.template get_helper<bs::shared_ptr_helper<boost::shared_ptr>>(bs::shared_ptr_helper_id)
      .reset(kernel, stored);
  return kernel;
}

}  // namespace corvath::math::metamodel
