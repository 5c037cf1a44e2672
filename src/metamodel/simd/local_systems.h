#pragma once

#include <cstdint>

/// Weighted least squares for many sets of weights, for the processor at hand.
///
/// The numbers of all levels are the same to the bit, and those of one set do not depend on the
/// others: nothing is fused, and sums have one order. Normal equations that are nearly singular
/// magnify every rounding; exported models repeat these. Plain data alone, like kernel_sums.h.
namespace corvath::math::metamodel::simd {

/// Numbers of sums, and strides of products and sums, are multiples of this.
constexpr std::int64_t kSumsMultiple = 8;

/// Sums over k of products(entry, k) weights(k, system), for each entry and system. Column-major.
struct WeightedSums {
  const double* products;  ///< num_entries x num_terms
  std::int64_t num_entries;
  std::int64_t num_terms;
  const double* weights;  ///< num_terms x num_systems
  std::int64_t weights_stride;
  std::int64_t num_systems;
};

/// Systems A z = r with symmetric A. Column i of `sums` holds the lower triangle of the i-th A,
/// column after column, then r.
struct LocalSystems {
  const double* sums;
  std::int64_t sums_stride;
  std::int64_t num_systems;
  std::int64_t num_unknowns;
  const double* at;  ///< num_systems x num_unknowns
  std::int64_t at_stride;
};

/// Doubles of scratch memory that `solve` needs.
constexpr std::int64_t SolveWork(std::int64_t num_unknowns) {
  return 8 * (num_unknowns * (num_unknowns + 1) / 2 + 3 * num_unknowns + 1);
}

/// The routines of one processor level.
struct LocalRoutines {
  const char* level;
  /// Adds to `sums` (num_entries x num_systems), term after term.
  void (*add)(const WeightedSums& job, double* sums, std::int64_t stride);
  /// results[i] = at_i . z_i by L D L', from the last unknown to the first. With `definite` it is
  /// NaN where a pivot is not above 1e-10 of the diagonal entry that it came from; without, an
  /// unknown whose pivot vanishes (up to the smallest normal number) is 0.
  void (*solve)(const LocalSystems& systems, bool definite, double* work, double* results);
};

/// The routines for this processor, chosen at the first call.
const LocalRoutines& GetLocalRoutines();

/// For tests: every level that this processor has, baseline first; `count` of them.
const LocalRoutines* const* GetAllLocalRoutines(int* count);

extern const LocalRoutines kLocalRoutinesBaseline;
#if defined(__x86_64__)
extern const LocalRoutines kLocalRoutinesV3;
extern const LocalRoutines kLocalRoutinesV4;
#endif

}  // namespace corvath::math::metamodel::simd
