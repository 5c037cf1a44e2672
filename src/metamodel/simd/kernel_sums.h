#pragma once

#include <cstdint>

/// Exponential kernels of many points at once, for the processor at hand.
///
/// The numbers of all levels are the same to the bit: nothing is fused, sums have the same order,
/// and the exponential is our own, good to 1 unit in the last place. Plain data alone: these headers are also read by files that are compiled
/// for processors above the baseline, and what such a file instantiates must not reach others.
namespace corvath::math::metamodel::simd {

/// Weights exp(sum_j factor_j (x_rj - p_ij)^2) of the support points p seen from the points x. Both
/// matrices are column-major; `stride` is the distance of two columns in elements. A weight below
/// the smallest double is 0; at a support point it is exactly 1.
struct ExpKernel {
  const double* points;  ///< num_points x num_inputs
  std::int64_t points_stride;
  std::int64_t num_points;
  const double* x;  ///< num_x x num_inputs
  std::int64_t x_stride;
  std::int64_t num_x;
  std::int64_t num_inputs;
  const double* factors;  ///< one per input, not positive, or one for all when `isotropic`
  bool isotropic;
};

/// The routines of one processor level.
struct KernelRoutines {
  const char* level;
  /// sums[r] = sum_i weight_ri values[i]. Of each 128 support points there are eight partial sums,
  /// by the remainder of i / 8, which are added from the first to the last.
  void (*weighted_sums)(const ExpKernel& kernel, const double* values, double* sums);
  /// weights[r * stride + i] = weight_ri
  void (*weights)(const ExpKernel& kernel, double* weights, std::int64_t stride);
  /// exp of each of `count` values: 0 below the smallest double, infinity above 709; NaN passes.
  void (*exp)(double* values, std::int64_t count);
};

/// The routines for this processor, chosen at the first call.
const KernelRoutines& GetKernelRoutines();

/// For tests and benchmarks: every level that this processor has, baseline first; `count` of them.
const KernelRoutines* const* GetAllKernelRoutines(int* count);

extern const KernelRoutines kRoutinesBaseline;
#if defined(__x86_64__)
extern const KernelRoutines kRoutinesV3;
extern const KernelRoutines kRoutinesV4;
#endif

}  // namespace corvath::math::metamodel::simd
