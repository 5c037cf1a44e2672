#pragma once

#include "optimizer/qp_solver.h"

#include <cstdint>

namespace corvath::algorithm::optimizer {

/// Sequential quadratic programming by reverse communication:
///
///     minimise f(x)  subject to  g_j(x) = 0 (j <= ME), g_j(x) >= 0 (j > ME), XL <= x <= XU
///
/// Each iteration solves a QP with linearised constraints and a quasi-Newton matrix, then searches
/// along its solution for a sufficient decrease of an augmented Lagrangian, with quadratic
/// interpolation or, for L > 1, at L points at once. Failing that, it searches once more against an
/// older merit value. After K. Schittkowski, "NLPQL: a FORTRAN subroutine solving constrained
/// nonlinear programming problems", Annals of Operations Research 5, 1986, pp. 485-500; Y.-H. Dai
/// and K. Schittkowski, "A sequential quadratic programming algorithm with non-monotone line
/// search", Pacific Journal of Optimization 4, 2008, pp. 335-351.
///
/// One call is one step; all state lives in the caller's arrays, whose meaning and sizes stand in
/// nlpqlp_interface.h. LQL is always true: QPSOLVE factorises C itself. IFAIL on return:
///
///  - -1: values wanted at the columns of X; -2: gradients wanted at the first one
///  - 0: converged
///  - 1: MAXIT iterations; 2: no descent; 3: underflow in the update of C; 4: the line search
///    failed; 5: an array is too short; 6, 9: a wrong argument; 7: no step from an infeasible
///    iterate; 8: the start violates its bounds; 10: the QP met numbers that are not finite; above
///    100: a QP could not be solved
///
/// After an error of a run, X(:, 1), F(1) and G(:, 1) hold the last accepted iterate.
/// @param LWA     length of WA, at least that of SqpMemory
/// @param LKWA    at least NMAX + 20
/// @param LACTIV  at least 2M + 10
void NLPQLP(std::int32_t L, std::int32_t M, std::int32_t ME, std::int32_t MMAX, std::int32_t N,
            std::int32_t NMAX, std::int32_t MNN2, double* X, double* F, double* G, double* DF,
            double* DG, double* U, const double* XL, const double* XU, double* C, double* D,
            double ACC, double ACCQP, double STPMIN, std::int32_t MAXFUN, std::int32_t MAXIT,
            std::int32_t MAX_NM, double TOL_NM, std::int32_t IPRINT, std::int32_t MODE,
            std::int32_t IOUT, std::int32_t& IFAIL, double* WA, std::int32_t LWA, std::int32_t* KWA,
            std::int32_t LKWA, std::int32_t* ACTIVE, std::int32_t LACTIV, bool LQL,
            QpSolve QPSOLVE);

}  // namespace corvath::algorithm::optimizer
