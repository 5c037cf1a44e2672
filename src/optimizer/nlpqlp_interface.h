#pragma once

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace corvath::algorithm::optimizer {

/// One run of the SQP core with all its arrays, for clients that compute functions and gradients
/// themselves:
///
///     minimise f(x)  subject to  g_j(x) = 0 (the first ME), g_j(x) >= 0 (the others), XL <= x <= XU
///
/// Reverse communication. With the start point in column 0 of X, its values in F(0), G.col(0), DF
/// and DG, and IFAIL 0, call Step() until IFAIL is neither -1 nor -2:
///
///  - IFAIL -1: set F(i) and G.col(i) at each column i of X
///  - IFAIL -2: set DF and DG at column 0 of X; F(0) and G.col(0) hold its values already
///  - IFAIL  0: column 0 of X is the solution, U its multipliers
///  - IFAIL above 0: an error, see sqp_core.h; column 0 of X is the last iterate
///
/// The arrays are larger than the problem (NMAX > N): X.col(i).head(N), DF.head(N) and
/// DG.topLeftCorner(M, N) are what the client reads and writes.
class NLPQLPInterface {
 public:
  NLPQLPInterface() : NLPQLPInterface(1, 0, 0, 1) {}

  /// @param num_variables     N, at least 1
  /// @param num_equalities    ME
  /// @param num_inequalities  M - ME
  /// @param num_parallel      L, points per round of the line search, at least 1
  /// @throws std::logic_error  a number below these
  NLPQLPInterface(std::int32_t num_variables, std::int32_t num_equalities,
                  std::int32_t num_inequalities, std::int32_t num_parallel);

  /// One call of the core. Allocates nothing.
  void Step();

  /// @throws utils::runtime_error  `bounds` has not N entries
  void SetLowerBounds(const Eigen::VectorXd& bounds);
  void SetUpperBounds(const Eigen::VectorXd& bounds);

  /// The N leading entries of a column of `points`, which has the shape of X.
  Eigen::VectorXd GetColumn(const Eigen::MatrixXd& points, std::int32_t index) const {
    return points.col(index).head(N);
  }

  std::int32_t N;
  std::int32_t M;
  std::int32_t ME;
  std::int32_t L;
  std::int32_t MMAX;  ///< max(M, 1)
  std::int32_t NMAX;  ///< max(N + 1, 2)
  std::int32_t MNN2;  ///< M + 2N + 2

  Eigen::MatrixXd X;   ///< NMAX x L
  Eigen::VectorXd F;   ///< L
  Eigen::MatrixXd G;   ///< MMAX x L
  Eigen::VectorXd DF;  ///< NMAX
  Eigen::MatrixXd DG;  ///< MMAX x NMAX, one row per constraint
  Eigen::VectorXd U;   ///< MNN2: constraints, lower bounds, upper bounds
  Eigen::VectorXd XU;  ///< N
  Eigen::VectorXd XL;  ///< N
  Eigen::MatrixXd C;   ///< NMAX x NMAX, the quasi-Newton matrix
  Eigen::VectorXd D;   ///< NMAX; not read

  double ACC = 1e-7;         ///< final accuracy
  double ACCQP = 0.0;        ///< accuracy of the QP solver; 0 chooses it
  double STPMIN = 0.0;       ///< smallest step of a parallel line search; 0 chooses it
  std::int32_t MAXFUN = 20;  ///< function calls per line search
  std::int32_t MAXIT = 100;  ///< iterations
  std::int32_t MAX_NM = 10;  ///< merit values that the non-monotone line search remembers
  double TOL_NM = 100.0;     ///< increase that it allows in the first iteration
  std::int32_t IPRINT = 0;
  std::int32_t IOUT = 1;
  std::int32_t MODE = 0;  ///< 1: C and U hold a first matrix and first multipliers
  std::int32_t IFAIL = 0;

  std::vector<double> WA;
  std::vector<std::int32_t> KWA;
  std::vector<std::int32_t> ACTIVE;
  bool LQL = true;
};

}  // namespace corvath::algorithm::optimizer
