#include "optimizer/nlpqlp_interface.h"

#include "foundation/exception.h"
#include "optimizer/sqp_core.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace corvath::algorithm::optimizer {

namespace {

/// Keeps every array size within 32 bits.
constexpr std::int32_t kMaxSize = 20000;

Eigen::Index CheckedSize(std::int32_t n, std::int32_t num_equalities, std::int32_t num_inequalities,
                         std::int32_t num_parallel) {
  if (n < 1 || num_equalities < 0 || num_inequalities < 0 || num_parallel < 1)
    throw std::logic_error("NLPQLP: a problem needs variables, and no number may be negative.");
  if (n > kMaxSize || num_equalities > 1000 * kMaxSize || num_inequalities > 1000 * kMaxSize)
    throw std::logic_error("NLPQLP: the problem is too large.");
  return n;
}

}  // namespace

NLPQLPInterface::NLPQLPInterface(std::int32_t num_variables, std::int32_t num_equalities,
                                 std::int32_t num_inequalities, std::int32_t num_parallel)
    : N(static_cast<std::int32_t>(
          CheckedSize(num_variables, num_equalities, num_inequalities, num_parallel))),
      M(num_equalities + num_inequalities),
      ME(num_equalities),
      L(num_parallel),
      MMAX(std::max(M, 1)),
      NMAX(std::max(N + 1, 2)),
      MNN2(M + 2 * N + 2),
      X(Eigen::MatrixXd::Zero(NMAX, L)),
      F(Eigen::VectorXd::Zero(L)),
      G(Eigen::MatrixXd::Zero(MMAX, L)),
      DF(Eigen::VectorXd::Zero(NMAX)),
      DG(Eigen::MatrixXd::Zero(MMAX, NMAX)),
      U(Eigen::VectorXd::Zero(MNN2)),
      XU(Eigen::VectorXd::Constant(N, std::numeric_limits<double>::max())),
      XL(Eigen::VectorXd::Constant(N, std::numeric_limits<double>::lowest())),
      C(Eigen::MatrixXd::Zero(NMAX, NMAX)),
      D(Eigen::VectorXd::Ones(NMAX)),
      WA(static_cast<std::size_t>(5 * (M + 2 * NMAX) + 3 * NMAX * NMAX / 2 + 23 * (N + 16) +
                                  3 * MMAX)),
      KWA(static_cast<std::size_t>(NMAX + 20)),
      ACTIVE(static_cast<std::size_t>(2 * MMAX + 10)) {}

void NLPQLPInterface::Step() {
  NLPQLP(L, M, ME, MMAX, N, NMAX, MNN2, X.data(), F.data(), G.data(), DF.data(), DG.data(),
         U.data(), XL.data(), XU.data(), C.data(), D.data(), ACC, ACCQP, STPMIN, MAXFUN, MAXIT,
         MAX_NM, TOL_NM, IPRINT, MODE, IOUT, IFAIL, WA.data(), static_cast<std::int32_t>(WA.size()),
         KWA.data(), static_cast<std::int32_t>(KWA.size()), ACTIVE.data(),
         static_cast<std::int32_t>(ACTIVE.size()), LQL, &QL);
}

void NLPQLPInterface::SetLowerBounds(const Eigen::VectorXd& bounds) {
  if (bounds.size() != N)
    throw utils::runtime_error(L"NLPQLP: Dimensions of lower bounds out of range.");
  XL = bounds;
}

void NLPQLPInterface::SetUpperBounds(const Eigen::VectorXd& bounds) {
  if (bounds.size() != N)
    throw utils::runtime_error(L"NLPQLP: Dimensions of upper bounds out of range.");
  XU = bounds;
}

}  // namespace corvath::algorithm::optimizer
