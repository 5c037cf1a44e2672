#include "metamodel/simd/dense_products.h"
#include "metamodel/simd/kernel_sums.h"
#include "metamodel/simd/local_systems.h"

namespace corvath::math::metamodel::simd {

namespace {

/// Whether this processor and its operating system have all of x86-64-v3, and of v4.
struct Levels {
  bool v3 = false;
  bool v4 = false;
};

Levels DetectLevels() {
  Levels levels;
#if defined(__x86_64__)
  __builtin_cpu_init();
  levels.v3 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
              __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
  levels.v4 = levels.v3 && __builtin_cpu_supports("avx512f") &&
              __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd") &&
              __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
#endif
  return levels;
}

/// The routines of every level that this processor has, baseline first.
template <class Routines>
struct Available {
  const Routines* routines[3];
  int count = 1;

  Available(const Routines& baseline, const Routines* v3, const Routines* v4)
      : routines{&baseline} {
    const Levels levels = DetectLevels();
    if (levels.v3) routines[count++] = v3;
    if (levels.v4) routines[count++] = v4;
  }

  const Routines& Best() const { return *routines[count - 1]; }
};

#if defined(__x86_64__)
#define ZEL_ALL_LEVELS(name) name##Baseline, &name##V3, &name##V4
#else
#define ZEL_ALL_LEVELS(name) name##Baseline, nullptr, nullptr
#endif

const Available<KernelRoutines>& GetAvailableKernels() {
  static const Available<KernelRoutines> available(ZEL_ALL_LEVELS(kRoutines));
  return available;
}

const Available<DenseRoutines>& GetAvailableDense() {
  static const Available<DenseRoutines> available(ZEL_ALL_LEVELS(kDenseRoutines));
  return available;
}

const Available<LocalRoutines>& GetAvailableLocal() {
  static const Available<LocalRoutines> available(ZEL_ALL_LEVELS(kLocalRoutines));
  return available;
}

}  // namespace

const KernelRoutines& GetKernelRoutines() {
  return GetAvailableKernels().Best();
}

const KernelRoutines* const* GetAllKernelRoutines(int* count) {
  *count = GetAvailableKernels().count;
  return GetAvailableKernels().routines;
}

const DenseRoutines& GetDenseRoutines() {
  return GetAvailableDense().Best();
}

const DenseRoutines* const* GetAllDenseRoutines(int* count) {
  *count = GetAvailableDense().count;
  return GetAvailableDense().routines;
}

const LocalRoutines& GetLocalRoutines() {
  return GetAvailableLocal().Best();
}

const LocalRoutines* const* GetAllLocalRoutines(int* count) {
  *count = GetAvailableLocal().count;
  return GetAvailableLocal().routines;
}

}  // namespace corvath::math::metamodel::simd
