#pragma once

#include "optimizer/merit_function.h"
#include "optimizer/qp_solver.h"

#include <Eigen/Core>

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

/// Doubles that a run needs, the QP solver's work included.
std::int64_t RequiredWork(const SqpArguments& a);

/// Sets IFAIL and reports the first wrong argument; true if there is none.
bool CheckArguments(const SqpArguments& a);

/// One call of the core: a view of the caller's arrays, and the steps between two returns.
class SqpRun {
 public:
  explicit SqpRun(const SqpArguments& arguments);

  void Continue();

  /// For the final tables.
  const SqpArguments& Arguments() const { return a_; }
  std::int32_t NumFunctions() const { return num_functions_; }
  std::int32_t NumGradients() const { return num_gradients_; }
  std::int32_t NumQps() const { return num_qps_; }
  std::int32_t Iteration() const { return iteration_; }
  std::int32_t BestIteration() const { return best_iteration_; }
  double BestObjective() const { return best_f_; }
  const double* BestX() const { return best_x_.data(); }
  const double* BestU() const { return best_u_.data(); }
  const double* BestG() const { return best_g_.data(); }

 private:
  using VectorMap = Eigen::Map<Eigen::VectorXd>;
  using MatrixMap = Eigen::Map<Eigen::MatrixXd, 0, Eigen::OuterStride<>>;
  enum class Direction { kPlain, kRelaxed, kAugmentedLagrangian };

  void Start();
  void Iterate();
  bool FindDirection(Direction first);
  bool FindRelaxedDirection();
  bool FindFallBackDirection();
  std::int32_t SolveQp(Eigen::Index num_variables, Eigen::Index num_rows, const double* linear);
  bool ReportQpFailure(std::int32_t answer);
  void Measure();
  void KeepBest();
  bool Decide(bool& stop);
  void UpdatePenalties();
  bool MakeDescent();
  double Slope();
  void StartSearch(double reference);
  void AskForPoints();
  void JudgePoints();
  bool UseOlderReference();
  void Accept(Eigen::Index column, double alpha);
  void UpdateMatrix();
  void Finish(std::int32_t ifail, const char* detail = "", const double* number = nullptr);
  MeritFunction Merit() const;
  double& Rho() { return c_(n_, n_); }

  SqpArguments a_;
  Eigen::Index n_, m_;

  // Constants of the run.
  double accqp_, tol_, beta_;
  std::int32_t max_trials_;

  // State in KWA.
  std::int32_t &iteration_, &num_functions_, &num_gradients_, &num_qps_;
  std::int32_t& trial_;           ///< number of the line-search trial
  std::int32_t& num_pushed_;      ///< merit values pushed on the stack so far
  std::int32_t& used_reference_;  ///< 1: an older merit value serves since the last accepted step
  std::int32_t& num_stationary_;  ///< iterates that were optimal but for the Lagrangian's gradient
  std::int32_t& best_iteration_;

  // State in WA.
  double& alpha_;             ///< step of the trial
  double& merit_;             ///< at the start of the line search
  double& reference_;         ///< what the trials must fall below
  double& slope_;             ///< of the merit function along the direction
  double& trial_slope_;       ///< alpha times the slope
  double& dbd_;               ///< d'Bd
  double& multiplier_slope_;  ///< sum_j u_j (grad g_j)'d / (1 - delta)
  double& f_;                 ///< at x
  double& best_kkt_;
  double& best_f_;
  VectorMap stack_;       ///< MAX_NM merit values, used cyclically
  VectorMap r_, v_;       ///< M + 2N
  VectorMap x_, g_;       ///< the accepted iterate
  VectorMap d_;           ///< N + 1, the last one is delta
  VectorMap lagrangian_;  ///< N, gradient of the Lagrangian without bounds, multipliers U
  VectorMap best_x_, best_u_, best_g_;

  // Work within one call, in WA.
  VectorMap qp_lower_, qp_upper_, diagonal_;  ///< N + 1
  VectorMap gradient_, product_;              ///< N
  VectorMap weights_;                         ///< M
  double* qp_work_;

  // The caller's arrays.
  MatrixMap points_, values_, dg_, c_;
  VectorMap df_, u_;  ///< N; M + 2N

  // Of this iteration.
  double delta_ = 0.0, kkt_ = 0.0, violation_ = 0.0, lagrangian_norm_ = 0.0;
  bool fall_back_ = false;
};

/// Texts for the standard output, whatever the unit IOUT; only with IPRINT above 0.
/// @param number  printed behind the detail, unless null
void PrintSqpError(const SqpArguments& a, const char* detail, const double* number = nullptr);
void PrintSqpWarning(const SqpArguments& a, const char* text);
void PrintSqpResult(const SqpRun& run);

}  // namespace corvath::algorithm::optimizer
