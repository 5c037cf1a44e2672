// Compiled for x86-64-v4: AVX-512.
#if defined(__x86_64__)

#define ZEL_LANES 8
#define ZEL_VECTOR_EXP _ZGVeN8v_exp  // of glibc's libmvec
#define ZEL_ROUTINES kRoutinesV4
#define ZEL_LEVEL "x86-64-v4"

extern "C" double __attribute__((vector_size(64)))
ZEL_VECTOR_EXP(double __attribute__((vector_size(64))));

#include "metamodel/simd/kernel_sums.inc"

#endif
