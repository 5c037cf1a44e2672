#pragma once

#include <cstddef>

namespace corvath::math {

/// Most numbers that an operation may put into one value where its arguments do not bound them
/// already (a count, a step, an outer product): 1 GiB of complex numbers.
constexpr std::size_t kMaxEntries = std::size_t{1} << 26;

/// Highest degree of one interpolation polynomial: its weights take O(degree^2) time, and long before
/// this they leave the range of doubles on most timelines.
constexpr int kMaxPolynomialDegree = 4096;

/// @throws CDimensionException `rows` x `columns` is more than kMaxEntries
void CheckEntries(std::size_t rows, std::size_t columns);

}  // namespace corvath::math
