#include "sobol_quality.h"

#include <algorithm>

namespace sobol {
namespace {

using corvath::math::kSobolBits;

/// Row `digit` of a generator matrix: bit i is that digit of the direction number v_i.
using GeneratorMatrix = std::array<std::uint32_t, kSobolBits>;

GeneratorMatrix MakeGeneratorMatrix(const DirectionNumbers& v) {
  GeneratorMatrix rows{};
  for (int digit = 0; digit < kSobolBits; ++digit)
    for (int i = 0; i < kSobolBits; ++i)
      rows[static_cast<std::size_t>(digit)] |=
          (v[static_cast<std::size_t>(i)] >> (kSobolBits - 1 - digit) & 1U) << i;
  return rows;
}

/// Vectors over GF(2), kept so that each has its lowest 1 where no other has one.
class Basis {
 public:
  /// Whether the vector was independent of those before.
  bool Add(std::uint32_t vector) {
    while (vector != 0) {
      auto& other = by_lowest_[static_cast<std::size_t>(__builtin_ctz(vector))];
      if (other == 0) {
        other = vector;
        return true;
      }
      vector ^= other;
    }
    return false;
  }

 private:
  std::array<std::uint32_t, 32> by_lowest_{};
};

int QualityOfRows(const GeneratorMatrix& a, const GeneratorMatrix& b, int m) {
  const std::uint32_t mask = (std::uint32_t{1} << m) - 1;
  int strength = m;  // any so many leading digits of both are independent
  Basis digits_of_a;
  for (int p = 0; p < strength; ++p) {
    // p digits of a, and as many of b as stay independent
    Basis basis = digits_of_a;
    int q = 0;
    while (p + q < strength && basis.Add(b[static_cast<std::size_t>(q)] & mask)) ++q;
    strength = std::min(strength, p + q);
    if (!digits_of_a.Add(a[static_cast<std::size_t>(p)] & mask)) strength = std::min(strength, p);
  }
  return m - strength;
}

}  // namespace

int PairQuality(const DirectionNumbers& a, const DirectionNumbers& b, int m) {
  return QualityOfRows(MakeGeneratorMatrix(a), MakeGeneratorMatrix(b), m);
}

double PairCost(const DirectionNumbers& a, const DirectionNumbers& b) {
  const GeneratorMatrix rows_a = MakeGeneratorMatrix(a);
  const GeneratorMatrix rows_b = MakeGeneratorMatrix(b);
  double cost = 0.0;
  for (int m = 2; m <= 16; ++m)
    cost += static_cast<double>(std::uint64_t{1} << (2 * QualityOfRows(rows_a, rows_b, m)));
  return cost;
}

}  // namespace sobol
