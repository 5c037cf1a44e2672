#include "metamodel/simd/kernel_sums.h"

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

struct Available {
  const KernelRoutines* routines[3];
  int count = 0;

  Available() {
    routines[count++] = &kRoutinesBaseline;
#if defined(__x86_64__)
    const Levels levels = DetectLevels();
    if (levels.v3) routines[count++] = &kRoutinesV3;
    if (levels.v4) routines[count++] = &kRoutinesV4;
#endif
  }
};

const Available& GetAvailable() {
  static const Available available;
  return available;
}

}  // namespace

const KernelRoutines& GetKernelRoutines() {
  const Available& available = GetAvailable();
  return *available.routines[available.count - 1];
}

const KernelRoutines* const* GetAllKernelRoutines(int* count) {
  *count = GetAvailable().count;
  return GetAvailable().routines;
}

}  // namespace corvath::math::metamodel::simd
