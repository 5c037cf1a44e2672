#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

namespace corvath::math {

/// The system's eps, 2^-52: default tolerance of IsClose and absolute bound next to zero.
constexpr double kEps = std::numeric_limits<double>::epsilon();

/// Whether two doubles are equal up to a relative `tolerance`: one is zero and the other's
/// magnitude is below kEps, or both have the same sign and |1 - min / max| < tolerance. Numbers of
/// opposite sign are never close, nor is a NaN to anything.
inline bool IsClose(double x, double y, double tolerance) {
  if (std::isnan(x) || std::isnan(y)) return false;  // min and max would drop one that comes second
  if (x == 0.0) return std::abs(y) < kEps;
  if (y == 0.0) return std::abs(x) < kEps;
  if ((x < 0.0) != (y < 0.0)) return false;
  return std::abs(1.0 - std::min(x, y) / std::max(x, y)) < tolerance;
}

/// IsClose at the default tolerance; besides, two NaNs are close, and so are two infinities of any
/// sign. A NaN or an infinity is close to nothing else.
inline bool IsClose(double x, double y) {
  if (std::isnan(x) || std::isnan(y)) return std::isnan(x) && std::isnan(y);
  if (std::isinf(x) || std::isinf(y)) return std::isinf(x) && std::isinf(y);
  return IsClose(x, y, kEps);
}

}  // namespace corvath::math
