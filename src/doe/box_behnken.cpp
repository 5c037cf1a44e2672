#include "doe/box_behnken.h"

#include <bitset>
#include <limits>

namespace corvath::math {
namespace {

/// Each mask is one block: a binary number of d digits, the leftmost for factor 0.
std::vector<std::uint32_t> PublishedMasks(std::uint64_t d) {
  switch (d) {
    case 6:
      return {52, 26, 13, 38, 19, 41};
    case 7:
      return {14, 67, 37, 104, 25, 84, 50};
    case 9:
      return {292, 146, 73, 448, 56, 7, 273, 98, 140, 266, 161, 84, 292, 146, 73};
    case 10:
      return {281, 801, 396, 338, 519, 225, 588, 170, 658, 116};
    case 11:
      return {285, 1166, 583, 1315, 1681, 1864, 932, 466, 233, 1140, 570};
    case 12:
      return {3232, 1616, 808, 404, 202, 101, 2098, 1049, 2572, 1286, 643, 2369};
    case 16:
      return {50304, 12576, 2124,  531,  25152, 38928, 1062, 393,  19464, 4866,  32964, 8241,
              9732,  35073, 16482, 4248, 40970, 20485, 2720, 1360, 5185,  10370, 33320, 16660};
    default:
      return {};
  }
}

using Block = std::vector<std::uint64_t>;  ///< factors, ascending

std::vector<Block> Blocks(std::uint64_t d) {
  std::vector<Block> blocks;
  for (const std::uint32_t mask : PublishedMasks(d)) {
    Block block;
    for (std::uint64_t factor = 0; factor < d; ++factor)
      if ((mask >> (d - 1 - factor) & 1U) != 0) block.push_back(factor);
    blocks.push_back(std::move(block));
  }
  if (blocks.empty())
    for (std::uint64_t i = 0; i < d; ++i)
      for (std::uint64_t j = i + 1; j < d; ++j) blocks.push_back({i, j});
  return blocks;
}

/// Of all signs of five factors, the half with an odd number of negative ones is left out.
bool IsDropped(std::uint64_t run, std::size_t factors) {
  return factors == 5 && std::bitset<5>(run).count() % 2 == 0;
}

std::uint64_t RunsPerBlock(std::uint64_t d) {
  switch (d) {
    case 6:
    case 7:
    case 9:
      return 8;
    case 10:
    case 11:
    case 12:
    case 16:
      return 16;
    default:
      return 4;
  }
}

std::uint64_t CentrePoints(std::uint64_t d) {
  if (d < 5) return 3;
  if (d < 8) return 6;
  if (d == 8) return 8;
  return d < 11 ? 10 : 12;
}

}  // namespace

std::uint64_t CountBoxBehnken(std::uint64_t d) {
  if (const auto masks = PublishedMasks(d); !masks.empty())
    return masks.size() * RunsPerBlock(d) + 1;
  // 4 d (d - 1) / 2 + 1
  std::uint64_t rows = 0;
  if (__builtin_mul_overflow(d, d - 1, &rows) || __builtin_mul_overflow(rows, 2, &rows) ||
      __builtin_add_overflow(rows, 1, &rows))
    return std::numeric_limits<std::uint64_t>::max();
  return rows;
}

std::vector<std::vector<std::uint32_t>> BoxBehnken(std::uint64_t d, bool centre_points) {
  constexpr std::uint32_t kLow = 1;
  constexpr std::uint32_t kMiddle = 2;
  constexpr std::uint32_t kHigh = 3;
  const std::vector<std::uint32_t> centre(d, kMiddle);
  std::vector<std::vector<std::uint32_t>> rows;
  for (const Block& block : Blocks(d)) {
    const std::uint64_t runs = std::uint64_t{1} << block.size();
    for (std::uint64_t run = 0; run < runs; ++run) {
      if (IsDropped(run, block.size())) continue;
      auto row = centre;
      // The last factor of the block changes its sign fastest.
      for (std::size_t k = 0; k < block.size(); ++k)
        row[block[k]] = (run >> (block.size() - k - 1) & 1U) != 0 ? kHigh : kLow;
      rows.push_back(std::move(row));
    }
  }
  rows.insert(rows.end(), centre_points ? CentrePoints(d) : 1, centre);
  return rows;
}

}  // namespace corvath::math
