#pragma once

#include "doe/primitive_polynomials.h"

#include <array>
#include <cstdint>
#include <vector>

namespace corvath::math {

constexpr std::uint64_t kMaxSobolDimensions = 8192;
constexpr int kSobolBits = 31;

/// Direction numbers of one dimension, v_0 to v_30, as binary fractions of 2^31.
using DirectionNumbers = std::array<std::uint32_t, kSobolBits>;

/// v from the initial numbers m_1, ..., m_s of a polynomial of degree s: v_(i-1) = m_i / 2^i, then
/// by the recurrence of P. Bratley, B. L. Fox, "Algorithm 659", ACM Transactions on Mathematical
/// Software 14, 1988, pp. 88-100.
DirectionNumbers MakeDirectionNumbers(BinaryPolynomial polynomial,
                                      const std::vector<std::uint32_t>& initial);

/// Sobol's property A: of each 2^d successive points whose first index is a multiple of 2^d, one
/// lies in each of the 2^d parts that halving every side of the d-dimensional cube makes. It holds
/// if the leading bits of v_0, ..., v_(d-1) of the d dimensions form a regular matrix over GF(2).
/// I. M. Sobol', "Uniformly distributed sequences with an additional uniform property", USSR
/// Computational Mathematics and Mathematical Physics 16 (5), 1976, pp. 236-242.
///
/// Dimensions are added one after the other; the property holds for each beginning of them.
class PropertyA {
 public:
  /// As many dimensions as one may ask for.
  static constexpr std::size_t kMaxDimensions = 1024;

  /// Adds a dimension if the property holds with it, and tells whether it does. `polynomial` is 0
  /// for the first dimension, the van der Corput sequence.
  bool Add(BinaryPolynomial polynomial, const std::vector<std::uint32_t>& initial);

  std::size_t GetDim() const { return rows_.size(); }

 private:
  static constexpr std::size_t kWords = kMaxDimensions / 64;
  using Bits = std::array<std::uint64_t, kWords>;

  std::vector<Bits> rows_;  ///< row d has its first 1 at d
};

/// The table that turns Gray codes of indices into points: row b, column k is v_0 ^ ... ^ v_b of
/// dimension k. So the point of index i, the exclusive or of the rows of its Gray code, is that of
/// the digits of i itself, and dimension 0 is the van der Corput sequence in its own order.
///
/// Dimension 0 apart, dimension k takes the k-th primitive polynomial, by degree and then by value.
/// The initial numbers of the first 50 dimensions are chosen for their pairs (see the .cpp), those
/// of the others at random; the first 1024 dimensions, and all beginnings of them, have property A.
class SobolTable {
 public:
  /// The table, with its first `dimensions` columns made; at most kMaxSobolDimensions. The work is
  /// done once for each dimension. Threads may share it.
  static const SobolTable& Get(std::uint64_t dimensions);

  /// Row `bit` (below kSobolBits), one number per column made so far.
  const std::uint32_t* Row(int bit) const { return rows_[static_cast<std::size_t>(bit)].data(); }

  /// How many of the dimensions made so far have property A together: the first of them.
  std::size_t NumWithPropertyA() const { return property_a_.GetDim(); }

 private:
  void AddColumn();

  std::size_t num_columns_ = 0;
  BinaryPolynomial polynomial_ = 0;  ///< of the last column
  PropertyA property_a_;
  std::array<std::array<std::uint32_t, kMaxSobolDimensions>, kSobolBits> rows_{};
};

}  // namespace corvath::math
