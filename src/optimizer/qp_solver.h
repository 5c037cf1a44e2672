#pragma once

#include <cstdint>

namespace corvath::algorithm::optimizer {

/// Length of WAR that QL needs. 64 bits: NMAX^2 alone may exceed 32.
constexpr std::int64_t QlWorkSize(std::int64_t m, std::int64_t mmax, std::int64_t nmax) {
  return m + nmax * nmax + nmax * nmax / 2 + 10 * nmax + 1 + mmax;
}

/// A bound of this magnitude and above is none.
constexpr double kNoBound = 1e30;

/// Strictly convex quadratic programs:
///
///     minimise x'Cx / 2 + d'x  subject to  a_j'x + b_j = 0 (j <= ME), a_j'x + b_j >= 0 (j > ME),
///     XL <= x <= XU
///
/// Dual active-set method of D. Goldfarb and A. Idnani, "A numerically stable dual method for
/// solving strictly convex quadratic programs", Mathematical Programming 27, 1983, pp. 1-33: starts
/// at the minimum without constraints and adds violated ones, each time keeping the multipliers of
/// the inequalities non-negative. One factorisation, then O(N^2 + MN) per change of the active set.
/// Allocates nothing. Matrices are column-major; constraints and messages count from 1.
///
/// @param M, ME, MMAX  constraints, equalities among them, row dimension of A (at least 1)
/// @param N, NMAX      variables, row dimension of C
/// @param MNN          size of U, at least M + 2N
/// @param C     MODE 1: the matrix, of which the lower triangle is read; its upper triangle,
///              diagonal included, is overwritten by the factor R of C = R'R. Otherwise such a
///              factor in the upper triangle. A matrix that is not positive definite is enlarged by
///              a multiple of the unit matrix first.
/// @param D     N; linear term
/// @param A     MMAX x N; constraint rows
/// @param B     M; constants of the constraints
/// @param XL, XU  N; see kNoBound
/// @param X     N; out: the solution
/// @param U     MNN; out: multipliers of the constraints, of the N lower, of the N upper bounds
/// @param EPS   largest violation, as a distance (no smaller than the rounding of |x|)
/// @param IFAIL out: 0; 1 too many iterations; 2 the accuracy cannot be reached, for normals that
///              nearly depend on each other; 3 numbers that are not finite; 5 an array is too short;
///              100 + k: constraint k (bounds behind the constraints) is not consistent with those
///              that were active
/// @param IPRINT  above 0: messages on the standard output, whatever the unit IOUT
/// @param WAR   work, LWAR >= QlWorkSize
/// @param IWAR  LIWAR >= N; out: the active constraints
void QL(std::int32_t M, std::int32_t ME, std::int32_t MMAX, std::int32_t N, std::int32_t NMAX,
        std::int32_t MNN, double* C, const double* D, const double* A, const double* B,
        const double* XL, const double* XU, double* X, double* U, double EPS, std::int32_t MODE,
        std::int32_t IOUT, std::int32_t& IFAIL, std::int32_t IPRINT, double* WAR, std::int32_t LWAR,
        std::int32_t* IWAR, std::int32_t LIWAR);

using QpSolve = decltype(&QL);

}  // namespace corvath::algorithm::optimizer
