#include "optimizer/sqp_core.h"

#include "optimizer/sqp_run.h"

namespace corvath::algorithm::optimizer {

void NLPQLP(std::int32_t L, std::int32_t M, std::int32_t ME, std::int32_t MMAX, std::int32_t N,
            std::int32_t NMAX, std::int32_t MNN2, double* X, double* F, double* G, double* DF,
            double* DG, double* U, const double* XL, const double* XU, double* C, double* /*D*/,
            double ACC, double ACCQP, double STPMIN, std::int32_t MAXFUN, std::int32_t MAXIT,
            std::int32_t MAX_NM, double TOL_NM, std::int32_t IPRINT, std::int32_t MODE,
            std::int32_t IOUT, std::int32_t& IFAIL, double* WA, std::int32_t LWA, std::int32_t* KWA,
            std::int32_t LKWA, std::int32_t* ACTIVE, std::int32_t LACTIV, bool /*LQL*/,
            QpSolve QPSOLVE) {
  const SqpArguments arguments{L,      M,      ME,    MMAX,   N,      NMAX,   MNN2,   X,    F,
                               G,      DF,     DG,    U,      XL,     XU,     C,      ACC,  ACCQP,
                               STPMIN, MAXFUN, MAXIT, MAX_NM, TOL_NM, IPRINT, MODE,   IOUT, IFAIL,
                               WA,     LWA,    KWA,   LKWA,   ACTIVE, LACTIV, QPSOLVE};
  if (!CheckNumbers(arguments)) return;
  SqpMemory memory(arguments);
  if (CheckLengths(arguments, memory) && CheckStart(arguments))
    SqpRun(arguments, memory).Continue();
}

}  // namespace corvath::algorithm::optimizer
