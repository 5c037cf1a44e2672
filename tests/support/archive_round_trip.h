#pragma once

#include "archive/instantiate.h"

#include <sstream>
#include <string>

namespace support {

/// The bytes of an archive that holds `object` alone, by value and without a name.
template <class T>
std::string Save(const T& object, unsigned int flags = 0) {
  std::ostringstream stream(std::ios::binary);
  {
    corvath::portable_binary_oarchive ar(stream, flags);
    ar << object;
  }
  return stream.str();
}

/// Reads such bytes into `object`; a mismatch of annotations throws.
template <class T>
void LoadInto(const std::string& bytes, T& object,
              unsigned int flags = corvath::archive::kThrowOnMismatch) {
  std::istringstream stream(bytes, std::ios::binary);
  corvath::portable_binary_iarchive ar(stream, flags);
  ar >> object;
}

template <class T>
T Load(const std::string& bytes) {
  T object;
  LoadInto(bytes, object);
  return object;
}

}  // namespace support
