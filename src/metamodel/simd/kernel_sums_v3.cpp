// Compiled for x86-64-v3: AVX2 and FMA.
#if defined(__x86_64__)

#define ZEL_LANES 4
#define ZEL_ROUTINES kRoutinesV3
#define ZEL_LEVEL "x86-64-v3"

#include "metamodel/simd/kernel_sums.inc"

#endif
