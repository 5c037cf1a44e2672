#pragma once

namespace corvath::math {

constexpr double kPi = 3.141592653589793;
constexpr double kSqrtTwo = 1.4142135623730951;

}  // namespace corvath::math
