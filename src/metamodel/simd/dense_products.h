#pragma once

#include <cstdint>

/// Products and factorisations of dense matrices, for the processor at hand.
///
/// Matrices are column-major; a `stride` is the distance of two columns in elements. The numbers of
/// all levels agree up to the order of summation and to fused products. Plain data alone, like
/// kernel_sums.h.
namespace corvath::math::metamodel::simd {

/// Doubles of scratch memory that a routine with `work` needs, whatever the sizes.
constexpr std::int64_t kProductWork = 192 * (96 + 192);

/// The routines of one processor level.
struct DenseRoutines {
  const char* level;
  /// c (m x n) = a' b, with a (k x m) and b (k x n). With `lower` the entries above the diagonal are
  /// left out or not, as it comes.
  void (*cross_products)(std::int64_t m, std::int64_t n, std::int64_t k, const double* a,
                         std::int64_t a_stride, const double* b, std::int64_t b_stride, double* c,
                         std::int64_t c_stride, bool lower);
  /// Replaces the lower triangle of `a` (n x n) by that of its Cholesky factor L; what stands above
  /// is neither read nor written. False at a pivot that is not positive.
  bool (*cholesky)(double* a, std::int64_t stride, std::int64_t n, double* work);
  /// b = (L L')^-1 b for each of `num` columns, L in the lower triangle of `l`.
  void (*solve)(const double* l, std::int64_t stride, std::int64_t n, double* b,
                std::int64_t b_stride, std::int64_t num);
  /// Replaces the lower triangle L of `l` by L^-1; what stands above is not touched.
  void (*invert_lower)(double* l, std::int64_t stride, std::int64_t n, double* work);
  /// Replaces the lower triangle L of `l` by that of L' L; what stands above is not touched.
  void (*square_lower)(double* l, std::int64_t stride, std::int64_t n, double* work);
};

/// The routines for this processor, chosen at the first call.
const DenseRoutines& GetDenseRoutines();

/// For tests and benchmarks: every level that this processor has, baseline first; `count` of them.
const DenseRoutines* const* GetAllDenseRoutines(int* count);

extern const DenseRoutines kDenseRoutinesBaseline;
#if defined(__x86_64__)
extern const DenseRoutines kDenseRoutinesV3;
extern const DenseRoutines kDenseRoutinesV4;
#endif

}  // namespace corvath::math::metamodel::simd
