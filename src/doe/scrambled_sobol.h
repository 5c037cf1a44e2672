#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace corvath::math {

/// The Sobol sequence with its digits scrambled at random, so that each point is uniform by itself
/// and estimates have an error that can be told:
///
/// A. B. Owen, "Randomly permuted (t,m,s)-nets and (t,s)-sequences", Monte Carlo and Quasi-Monte
/// Carlo Methods in Scientific Computing, Lecture Notes in Statistics 106, 1995, pp. 299-317.
///
/// Each binary digit is flipped or not by a hash of the seed, the dimension and the digits above
/// it: nothing is stored, and any range of points can be asked for. What the sequence has in its
/// elementary intervals stays.
class ScrambledSobol {
 public:
  /// @throws std::logic_error  not 1 to kMaxSobolDimensions dimensions
  ScrambledSobol(Eigen::Index dimensions, std::uint32_t seed);

  /// Points `first` to `first + n - 1`: n x d in (0, 1). Made on all processors. The first 2^k
  /// points from a multiple of 2^k are the most even ones.
  /// @throws std::logic_error  beyond kMaxSobolIndex
  Eigen::MatrixXd GetPoints(std::uint64_t first, Eigen::Index n) const;

 private:
  std::vector<std::uint64_t> keys_;  ///< of each dimension
};

}  // namespace corvath::math
