// Compiled for the baseline of the build.

#define ZEL_LANES 2
#define ZEL_ROUTINES kRoutinesBaseline

#if defined(__x86_64__)

#define ZEL_VECTOR_EXP _ZGVbN2v_exp  // of glibc's libmvec
#define ZEL_LEVEL "x86-64"
extern "C" double __attribute__((vector_size(16)))
ZEL_VECTOR_EXP(double __attribute__((vector_size(16))));

#else

#define ZEL_VECTOR_EXP ExpByLane
#define ZEL_LEVEL "generic"
namespace {
typedef double TwoLanes __attribute__((vector_size(16)));
inline TwoLanes ExpByLane(TwoLanes x) {
  return TwoLanes{__builtin_exp(x[0]), __builtin_exp(x[1])};
}
}  // namespace

#endif

#include "metamodel/simd/kernel_sums.inc"
