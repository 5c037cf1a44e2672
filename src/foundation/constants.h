#pragma once

#include <limits>

namespace corvath::math {

constexpr double kPi = 3.141592653589793;
constexpr double kSqrtTwo = 1.4142135623730951;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

}  // namespace corvath::math
