#pragma once

#include "doe/scheme.h"

#include <cstdint>
#include <vector>

namespace corvath::math {

/// How many levels a scheme takes at the lower end, between the ends and at the upper end.
struct LevelTriple {
  std::uint64_t lower;
  std::uint64_t inner;
  std::uint64_t upper;

  std::uint64_t Total() const { return lower + inner + upper; }
};

/// The levels of each dimension; a scheme's points are indices into them.
using LevelLists = std::vector<std::vector<double>>;

/// A continuous dimension has equally spaced levels from -1 to 1, from 0 without lower ones; a
/// single level is 0. A discrete dimension with too many states has those nearest to equally spaced
/// ones, and as a single inner level the state of the smallest magnitude (1 rather than -1); one
/// with fewer states than levels has them all.
/// @param extend  repeat short lists from their beginning until they have all levels
LevelLists MakeLevelLists(std::uint64_t dimensions, const StateLists& state_lists,
                          const LevelTriple& triple, bool extend);

/// Position of the level of the smallest magnitude, the first of equal ones.
std::size_t SmallestMagnitude(const std::vector<double>& levels);

}  // namespace corvath::math
