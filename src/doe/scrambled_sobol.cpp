#include "doe/scrambled_sobol.h"

#include "doe/sobol.h"
#include "doe/sobol_table.h"
#include "foundation/parallel.h"

namespace corvath::math {
namespace {

using Eigen::Index;

constexpr std::uint64_t kGolden = 0x9e3779b97f4a7c15U;  // 2^64 over the golden ratio

/// The finaliser of SplitMix64: G. L. Steele, D. Lea, C. H. Flood, "Fast splittable pseudorandom
/// number generators", OOPSLA 2014, pp. 453-472.
std::uint64_t Mix(std::uint64_t z) {
  z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
  z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
  return z ^ (z >> 31);
}

/// @param x  below 2^31
double Scramble(std::uint32_t x, std::uint64_t key) {
  std::uint64_t flips = 0;
  for (int digit = 0; digit < kSobolBits; ++digit) {
    // The digits above, behind a leading 1: one number for each node of the tree of digits.
    const std::uint64_t node = (std::uint64_t{1} << digit) | (x >> (kSobolBits - digit));
    flips = (flips << 1) | (Mix(key + node * kGolden) & 1U);
  }
  // Below the digits of the sequence a random remainder fills what a double can hold.
  constexpr int kRest = 53 - kSobolBits;
  const std::uint64_t rest = Mix(key + (std::uint64_t{x} | 0x80000000U) * kGolden) >> (64 - kRest);
  const auto scaled = static_cast<double>(((std::uint64_t{x} ^ flips) << kRest) | rest);
  return (scaled + 0.5) * 0x1p-53 < 1.0 ? (scaled + 0.5) * 0x1p-53 : 1.0 - 0x1p-53;
}

}  // namespace

ScrambledSobol::ScrambledSobol(Index dimensions, std::uint32_t seed) {
  CheckSobol(0, static_cast<std::uint64_t>(dimensions));
  for (Index k = 0; k < dimensions; ++k)
    keys_.push_back(Mix(Mix(seed + kGolden) + static_cast<std::uint64_t>(k) * kGolden));
}

Eigen::MatrixXd ScrambledSobol::GetPoints(std::uint64_t first, Index n) const {
  const auto d = static_cast<Index>(keys_.size());
  Eigen::MatrixXd points(n, d);
  if (n == 0) return points;
  CheckSobol(first + static_cast<std::uint64_t>(n) - 1, keys_.size());
  const SobolTable& table = SobolTable::Get(keys_.size());
  constexpr std::size_t kGrain = 256;
  utils::ParallelFor(static_cast<std::size_t>(n), kGrain, [&](std::size_t begin, std::size_t end) {
    for (Index k = 0; k < d; ++k)
      for (std::size_t i = begin; i < end; ++i) {
        const std::uint64_t index = first + i;
        std::uint32_t x = 0;
        std::uint64_t gray_code = index ^ (index >> 1);
        for (int bit = 0; gray_code != 0; ++bit, gray_code >>= 1)
          if ((gray_code & 1U) != 0) x ^= table.Row(bit)[k];
        points(static_cast<Index>(i), k) = Scramble(x, keys_[static_cast<std::size_t>(k)]);
      }
  });
  return points;
}

}  // namespace corvath::math
