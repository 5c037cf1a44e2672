#pragma once

/// For the .cpp files that hold the serialisation bodies of classes; see archive/serialization.h.
/// Brings the archives, the serializers of the containers that persisted members use, and the
/// macros for explicit instantiation. All macros stand outside every namespace.

#include "archive/bit_vector.h"
#include "archive/collections.h"
#include "archive/eigen_matrix.h"
#include "archive/path.h"
#include "archive/portable_iarchive.h"
#include "archive/portable_oarchive.h"
#include "archive/serialization.h"
#include "archive/uuid.h"

#include <boost/serialization/base_object.hpp>
#include <boost/serialization/export.hpp>
#include <boost/serialization/nvp.hpp>
#include <boost/serialization/optional.hpp>
#include <boost/serialization/shared_ptr.hpp>
#include <boost/serialization/utility.hpp>

/// Explicit instantiation of `T::serialize` for the two portable archives.
#define ZEL_INSTANTIATE_SERIALIZE(T)                                            \
  template void T::serialize(corvath::portable_binary_oarchive&, unsigned int); \
  template void T::serialize(corvath::portable_binary_iarchive&, unsigned int);

/// Explicit instantiation of `T::save` and `T::load` for the two portable archives.
#define ZEL_INSTANTIATE_LOAD_SAVE(T)                                             \
  template void T::save(corvath::portable_binary_oarchive&, unsigned int) const; \
  template void T::load(corvath::portable_binary_iarchive&, unsigned int);

/// Registers T with both archives, so that pointers to its bases can hold it.
#define ZEL_EXPORT_IMPLEMENT(T) BOOST_CLASS_EXPORT_IMPLEMENT(T)
