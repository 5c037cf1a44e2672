#pragma once

#include "optimizer/qp_solver.h"

#include <cstdint>

namespace corvath::algorithm::optimizer {

/// The arguments of NLPQLP under their names.
struct SqpArguments {
  std::int32_t L, M, ME, MMAX, N, NMAX, MNN2;
  double *X, *F, *G, *DF, *DG, *U;
  const double *XL, *XU;
  double* C;
  double ACC, ACCQP, STPMIN;
  std::int32_t MAXFUN, MAXIT, MAX_NM;
  double TOL_NM;
  std::int32_t IPRINT, MODE, IOUT;
  std::int32_t& IFAIL;
  double* WA;
  std::int32_t LWA;
  std::int32_t* KWA;
  std::int32_t LKWA;
  std::int32_t* ACTIVE;
  std::int32_t LACTIV;
  QpSolve QPSOLVE;
};

struct SqpMemory;

/// Each true if there is nothing to refuse; else IFAIL is set and the first fault printed. In the
/// order of the calls: the numbers, which a layout of the arrays relies on; the lengths of the
/// arrays; on the first call of a run its start.
bool CheckNumbers(const SqpArguments& a);
bool CheckLengths(const SqpArguments& a, const SqpMemory& memory);
bool CheckStart(const SqpArguments& a);

/// Sets IFAIL and prints what it means, with IPRINT above 0, on the standard output, whatever the
/// unit IOUT.
/// @param number  printed behind the detail, unless null
void Fail(const SqpArguments& a, std::int32_t ifail, const char* detail = "",
          const double* number = nullptr);

}  // namespace corvath::algorithm::optimizer
