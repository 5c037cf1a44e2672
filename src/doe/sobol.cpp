#include "doe/sobol.h"

#include <algorithm>
#include <stdexcept>

namespace corvath::math {
namespace {

struct SobolState {
  std::uint64_t last_index = kMaxSobolIndex;  ///< that no other follows
  std::uint64_t dimensions = 0;
  std::vector<std::uint32_t> x;
};

void AddDirection(const std::uint32_t* direction, std::uint64_t dimensions, std::uint32_t* x) {
  for (std::uint64_t k = 0; k < dimensions; ++k) x[k] ^= direction[k];
}

}  // namespace

void CheckSobol(std::uint64_t last_index, std::uint64_t dimensions) {
  if (last_index > kMaxSobolIndex || dimensions == 0 || dimensions > kMaxSobolDimensions)
    throw std::logic_error("Sobol: Error calculating single point.");
}

const std::vector<std::uint32_t>& SobolPoint(std::uint64_t index, std::uint64_t dimensions) {
  static SobolState state;
  CheckSobol(index, dimensions);
  const SobolTable& table = SobolTable::Get(dimensions);
  if (index == state.last_index + 1 && dimensions <= state.dimensions) {
    AddDirection(table.Row(__builtin_ctzll(index)), dimensions, state.x.data());
  } else {
    state.x.assign(dimensions, 0);
    std::uint64_t gray_code = index ^ (index >> 1);
    for (int bit = 0; gray_code != 0; ++bit, gray_code >>= 1)
      if ((gray_code & 1U) != 0) AddDirection(table.Row(bit), dimensions, state.x.data());
  }
  state.last_index = index;
  state.dimensions = dimensions;
  return state.x;
}

void SobolCoordinates(std::uint64_t index, std::uint64_t dimensions, double* point) {
  constexpr double kUnit = 4.656612873077e-10;
  const std::uint32_t* const x = SobolPoint(index, dimensions).data();
  for (std::uint64_t k = 0; k < dimensions; ++k)
    point[k] = 2.0 * (static_cast<std::int32_t>(x[k]) * kUnit) - 1.0;  // below 2^31
}

}  // namespace corvath::math
