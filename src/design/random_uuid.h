#pragma once

#include <boost/uuid/uuid.hpp>

#include <cstddef>

namespace corvath::algorithm::datatypes {

/// Fills `size` bytes at `data` from a cryptographic random source, or throws.
using RandomSource = void (*)(void* data, std::size_t size);

/// The operating system's cryptographic random source.
/// @throws boost::uuids::entropy_error  the system refuses or gives too little
void SystemRandomSource(void* data, std::size_t size);

/// A new random uuid (version 4, variant 1 of RFC 4122).
/// @throws what `source` throws
boost::uuids::uuid NewRandomUuid(RandomSource source = SystemRandomSource);

}  // namespace corvath::algorithm::datatypes
