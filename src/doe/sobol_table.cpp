#include "doe/sobol_table.h"

#include <mutex>

namespace corvath::math {
namespace {

/// Initial numbers of the dimensions 1, 2, ... Those of dimensions 1 to 5 are given as far as the
/// first three direction numbers go; the others were searched by tools/sobol_search.cpp.
const std::vector<std::vector<std::uint32_t>>& ChosenInitialNumbers() {
  static const std::vector<std::vector<std::uint32_t>> numbers = {
#include "doe/sobol_initial_numbers.inc"
  };
  return numbers;
}

/// Odd numbers m_i < 2^i by the splitmix64 sequence (S. Vigna, public domain).
std::vector<std::uint32_t> RandomInitialNumbers(std::uint64_t& state, int degree) {
  std::vector<std::uint32_t> numbers;
  for (int i = 1; i <= degree; ++i) {
    state += 0x9e3779b97f4a7c15U;
    std::uint64_t z = state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    z ^= z >> 31;
    numbers.push_back((static_cast<std::uint32_t>(z >> 32) & ((1U << i) - 1)) | 1U);
  }
  return numbers;
}

}  // namespace

DirectionNumbers MakeDirectionNumbers(BinaryPolynomial polynomial,
                                      const std::vector<std::uint32_t>& initial) {
  const std::size_t s = initial.size();
  DirectionNumbers v{};
  for (std::size_t i = 0; i < kSobolBits; ++i) {
    if (i < s) {
      v[i] = initial[i] << (kSobolBits - 1 - i);
      continue;
    }
    v[i] = v[i - s] ^ (v[i - s] >> s);
    for (std::size_t j = 1; j < s; ++j)
      if ((polynomial >> (s - j) & 1U) != 0) v[i] ^= v[i - j];
  }
  return v;
}

bool PropertyA::Add(BinaryPolynomial polynomial, const std::vector<std::uint32_t>& initial) {
  const std::size_t d = rows_.size();
  const std::size_t s = initial.size();
  Bits row{};
  const auto bit = [&row](std::size_t i) { return row[i / 64] >> (i % 64) & 1U; };
  const auto flip = [&row](std::size_t i) { row[i / 64] ^= std::uint64_t{1} << (i % 64); };
  if (polynomial == 0) {
    flip(0);
  } else {
    // The leading bits follow the recurrence without its shifted term.
    for (std::size_t i = 0; i < kMaxDimensions; ++i) {
      std::uint64_t leading = 0;
      if (i < s) {
        leading = initial[i] >> i & 1U;
      } else {
        leading = bit(i - s);
        for (std::size_t j = 1; j < s; ++j)
          if ((polynomial >> (s - j) & 1U) != 0) leading ^= bit(i - j);
      }
      if (leading != 0) flip(i);
    }
  }
  for (std::size_t i = 0; i < d; ++i)
    if (bit(i) != 0)
      for (std::size_t word = i / 64; word < kWords; ++word) row[word] ^= rows_[i][word];
  if (bit(d) == 0) return false;
  rows_.push_back(row);
  return true;
}

const SobolTable& SobolTable::Get(std::uint64_t dimensions) {
  static std::mutex mutex;  // columns that exist are read without it
  static SobolTable table;
  const std::lock_guard<std::mutex> lock(mutex);
  while (table.num_columns_ < dimensions) table.AddColumn();
  return table;
}

void SobolTable::AddColumn() {
  const std::size_t k = num_columns_;
  DirectionNumbers v{};
  if (k == 0) {
    for (std::size_t i = 0; i < kSobolBits; ++i) v[i] = 1U << (kSobolBits - 1 - i);
    property_a_.Add(0, {});
  } else {
    polynomial_ = k == 1 ? 3U : NextPrimitive(polynomial_);
    const bool chosen = k <= ChosenInitialNumbers().size();
    std::vector<std::uint32_t> initial;
    if (chosen) initial = ChosenInitialNumbers()[k - 1];
    std::uint64_t seed = std::uint64_t{k} << 32;
    do {
      if (!chosen) initial = RandomInitialNumbers(seed, Degree(polynomial_));
    } while (k < PropertyA::kMaxDimensions && !property_a_.Add(polynomial_, initial) && !chosen);
    v = MakeDirectionNumbers(polynomial_, initial);
  }
  std::uint32_t sum = 0;
  for (std::size_t b = 0; b < kSobolBits; ++b) rows_[b][k] = sum ^= v[b];
  ++num_columns_;
}

}  // namespace corvath::math
