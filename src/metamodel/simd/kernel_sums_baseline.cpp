// Compiled for the baseline of the build.

#define ZEL_LANES 2
#define ZEL_ROUTINES kRoutinesBaseline

#if defined(__x86_64__)
#define ZEL_LEVEL "x86-64"
#else
#define ZEL_LEVEL "generic"
#endif

#include "metamodel/simd/kernel_sums.inc"
