// Compiled for x86-64-v3: AVX2 and FMA.
#if defined(__x86_64__)

#define ZEL_LANES 4
#define ZEL_VECTOR_EXP _ZGVdN4v_exp  // of glibc's libmvec
#define ZEL_ROUTINES kRoutinesV3
#define ZEL_LEVEL "x86-64-v3"

extern "C" double __attribute__((vector_size(32)))
ZEL_VECTOR_EXP(double __attribute__((vector_size(32))));

#include "metamodel/simd/kernel_sums.inc"

#endif
