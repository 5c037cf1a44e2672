#pragma once

#include "archive/instantiate.h"
#include "metamodel/kernels/kernel.h"

#include <boost/shared_ptr.hpp>

namespace corvath::math::metamodel {

/// Reads the plain pointer to a kernel that the oldest models stored. Other models may point to the
/// same kernel.
template <class Archive>
boost::shared_ptr<KernelBase> LoadStoredKernel(Archive& ar, const char* name) {
  KernelBase* stored = nullptr;
  ar >> boost::serialization::make_nvp(name, stored);
  return ar.Share(stored);
}

}  // namespace corvath::math::metamodel
