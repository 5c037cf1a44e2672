#pragma once

#include <limits>

namespace corvath::analysis {

/// An estimate with the ends of its confidence interval; NaN where there is nothing to tell.
struct Interval {
  double value = std::numeric_limits<double>::quiet_NaN();
  double low = std::numeric_limits<double>::quiet_NaN();
  double high = std::numeric_limits<double>::quiet_NaN();
};

}  // namespace corvath::analysis
