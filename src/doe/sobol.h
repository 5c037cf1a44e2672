#pragma once

#include "doe/sobol_table.h"

#include <cstdint>
#include <vector>

namespace corvath::math {

/// Coordinates of the point of this index of the Sobol sequence, as integers below 2^31, in the
/// first `dimensions` elements; valid until the next call. I. M. Sobol', "On the distribution of
/// points in a cube and the approximate evaluation of integrals", USSR Computational Mathematics
/// and Mathematical Physics 7, 1967, pp. 86-112. Points of successive indices take one operation
/// for each coordinate: the state is process-wide, and threads must not share it.
/// @throws std::logic_error "Sobol: Error calculating single point."  an index above kMaxSobolIndex
///                          or not 1 to kMaxSobolDimensions dimensions
const std::vector<std::uint32_t>& SobolPoint(std::uint64_t index, std::uint64_t dimensions);

/// The same point in [-1, 1]^dimensions. One half is 2^30 times 4.656612873077e-10, which differs
/// from 2^-31 in the fourteenth figure: the first point lies 8.43e-14 below the centre.
void SobolCoordinates(std::uint64_t index, std::uint64_t dimensions, double* point);

/// The throw of SobolPoint, for the last index of a request before its first point is made.
void CheckSobol(std::uint64_t last_index, std::uint64_t dimensions);

constexpr std::uint64_t kMaxSobolIndex = 0x7fffffff;

}  // namespace corvath::math
