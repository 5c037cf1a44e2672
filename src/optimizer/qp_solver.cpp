#include "optimizer/qp_solver.h"

#include "optimizer/dual_active_set.h"

#include <algorithm>
#include <iostream>

namespace corvath::algorithm::optimizer {

namespace {

/// True if the arrays are long enough.
bool CheckSizes(std::int64_t m, std::int64_t mmax, std::int64_t n, std::int64_t nmax,
                std::int64_t mnn, std::int64_t lwar, std::int64_t liwar, bool print) {
  const std::int64_t needed = QlWorkSize(m, mmax, nmax);
  if (mnn < m + 2 * n) {
    if (print) std::cout << "*** ERROR (QL): MNN too small!\n";
  } else if (liwar < n) {
    if (print) std::cout << "*** ERROR (QL): LIWAR too small!\n";
  } else if (lwar < needed) {
    if (print)
      std::cout << "*** ERROR (QL): LWAR too small! Should be at least " << needed << ", but only "
                << lwar << " is available.\n";
  } else {
    return true;
  }
  return false;
}

void PrintFailure(std::int32_t ifail, std::int32_t limit, const DualActiveSet& solver) {
  if (ifail == 1)
    std::cout << "*** ERROR (QL): Too many iterations (more than " << limit << ")\n";
  else if (ifail == 2)
    std::cout << "*** ERROR (QL): Accuracy insufficient to attain convergence!\n";
  else if (ifail == 3)
    std::cout << "*** ERROR (QL): Internal error, division by zero!\n";
  else if (ifail > 100) {
    std::cout << "*** ERROR (QL): Constraint " << ifail - 100 << " not consistent to";
    for (std::int32_t k = 0; k < solver.NumActive(); ++k) std::cout << ' ' << solver.Active(k);
    std::cout << '\n';
  }
}

}  // namespace

void QL(std::int32_t M, std::int32_t ME, std::int32_t MMAX, std::int32_t N, std::int32_t NMAX,
        std::int32_t MNN, double* C, const double* D, const double* A, const double* B,
        const double* XL, const double* XU, double* X, double* U, double EPS, std::int32_t MODE,
        std::int32_t /*IOUT*/, std::int32_t& IFAIL, std::int32_t IPRINT, double* WAR,
        std::int32_t LWAR, std::int32_t* IWAR, std::int32_t LIWAR) {
  IFAIL = 5;
  if (!CheckSizes(M, MMAX, N, NMAX, MNN, LWAR, LIWAR, IPRINT > 0)) return;

  const std::int32_t limit = 40 * (M + N);
  DualActiveSet solver({M, ME, MMAX, N, NMAX, C, D, A, B, XL, XU}, EPS, WAR, IWAR);
  const std::int32_t answer = solver.Solve(MODE == 1, limit, X);
  IFAIL = answer < 0 ? 100 - answer : answer;
  if (IPRINT > 0) {
    const double enlarged = solver.Enlargement();
    if (enlarged >= 1.0 && enlarged < 1000.0)
      std::cout << "*** ERROR (QL): Matrix G was enlarged" << static_cast<std::int32_t>(enlarged)
                << "-times by unit matrix!\n";
    PrintFailure(IFAIL, limit, solver);
  }

  std::fill_n(U, MNN, 0.0);
  for (std::int32_t k = 0; k < solver.NumActive(); ++k) U[IWAR[k] - 1] = solver.Multiplier(k);
}

}  // namespace corvath::algorithm::optimizer
