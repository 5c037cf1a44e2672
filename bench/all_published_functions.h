#pragma once

#include "support/published_functions.h"

namespace bench {

/// Those of the tests, and five more.
const std::vector<support::PublishedFunction>& AllPublishedFunctions();

}  // namespace bench
