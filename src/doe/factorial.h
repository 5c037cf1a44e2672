#pragma once

#include "doe/scheme.h"

#include <cstdint>
#include <vector>

namespace corvath::math {

/// The points of a scheme that is no sequence of random or quasi-random numbers.
struct GridSample {
  std::vector<std::vector<double>> rows;
  bool sorted = false;  ///< all designs are to be sorted, and equal ones reduced to one
};

/// Whether MakeGridSample knows the scheme.
bool IsGridScheme(std::int32_t type);

/// The points in the order in which the scheme yields them; none below its lowest level. State
/// lists are empty or as many as there are dimensions.
/// @throws std::domain_error  the level, dimensions or states do not fit, or there would be more
///                            points than CheckSampleSize lets pass
GridSample MakeGridSample(std::int32_t type, std::uint64_t dimensions, std::uint64_t level,
                          const StateLists& state_lists);

}  // namespace corvath::math
