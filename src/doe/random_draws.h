#pragma once

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/uniform_real_distribution.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace corvath::math {

using Engine = boost::random::mt19937;

/// A number of [a, b), or a if they are equal.
inline double DrawUniform(Engine& engine, double a, double b) {
  return a == b ? a : boost::random::uniform_real_distribution<double>(a, b)(engine);
}

/// An integer of [a, b], both included.
inline std::int32_t DrawInteger(Engine& engine, std::int64_t a, std::int64_t b) {
  const double end =
      std::nextafter(static_cast<double>(b + 1), -std::numeric_limits<double>::infinity());
  const double drawn = DrawUniform(engine, static_cast<double>(a), end);
  return static_cast<std::int32_t>(std::min(drawn, 2147483647.0));
}

/// Exchanges each element, from the last to the second, with one of all but the last. Stored
/// generators rely on this range, which is not the element's own.
template <class T>
void Shuffle(Engine& engine, std::vector<T>& values) {
  const auto n = static_cast<std::int64_t>(values.size());
  for (std::int64_t k = n - 1; k > 0; --k)
    std::swap(values[static_cast<std::size_t>(k)],
              values[static_cast<std::size_t>(DrawInteger(engine, 0, n - 2))]);
}

}  // namespace corvath::math
