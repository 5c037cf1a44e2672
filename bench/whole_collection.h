#pragma once

#include "optimizer/hock_schittkowski.h"

namespace bench {

/// All 82 problems at hand, those of the tests included, in the order of their numbers.
const std::vector<support::CollectedProblem>& WholeCollection();

}  // namespace bench
