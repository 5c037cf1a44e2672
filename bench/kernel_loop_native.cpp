// The hand-written loop that the predictions are measured against: one query at a time, vectors of
// support points, the vector exponential of glibc, compiled for the processor of this machine.
#include "kernel_loop_native.h"

#if defined(__AVX512F__)
#define LANES 8
#define VECTOR_EXP _ZGVeN8v_exp
#elif defined(__AVX2__)
#define LANES 4
#define VECTOR_EXP _ZGVdN4v_exp
#else
#define LANES 2
#define VECTOR_EXP _ZGVbN2v_exp
#endif

typedef double Lanes __attribute__((vector_size(LANES * 8)));
typedef double LanesInMemory __attribute__((vector_size(LANES * 8), aligned(8), may_alias));
extern "C" Lanes VECTOR_EXP(Lanes);

void KernelLoop(const KernelLoopData& data, const double* factors, double* sums) {
  constexpr long kVectors = 4;  // independent sums, enough to hide the latency of one
  constexpr long kStep = kVectors * LANES;
  for (long r = 0; r < data.num_x; ++r) {
    Lanes total = {};
    for (long i = 0; i < data.num_points; i += kStep) {  // num_points is a multiple of kStep
      Lanes squared[kVectors] = {};
      for (long j = 0; j < data.num_inputs; ++j) {
        const double x = data.x[j * data.num_x + r];
        const double* p = data.points + j * data.num_points + i;
        for (long v = 0; v < kVectors; ++v) {
          const Lanes d = x - *reinterpret_cast<const LanesInMemory*>(p + v * LANES);
          squared[v] += factors ? d * (d * factors[j]) : d * d;
        }
      }
      for (long v = 0; v < kVectors; ++v) {
        const Lanes exponent = factors ? squared[v] : squared[v] * data.factor;
        total += VECTOR_EXP(exponent) *
                 *reinterpret_cast<const LanesInMemory*>(data.values + i + v * LANES);
      }
    }
    double sum = 0.0;
    for (int lane = 0; lane < LANES; ++lane) sum += total[lane];
    sums[r] = sum;
  }
}
