// Compiled for x86-64-v4: AVX-512.
#if defined(__x86_64__)

#define ZEL_LANES 8
#define ZEL_ROUTINES kRoutinesV4
#define ZEL_LEVEL "x86-64-v4"

#include "metamodel/simd/kernel_sums.inc"

#endif
