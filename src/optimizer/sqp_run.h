#pragma once

#include "optimizer/merit_function.h"
#include "optimizer/sqp_memory.h"

#include <Eigen/Core>

#include <cstdint>

namespace corvath::algorithm::optimizer {

/// One call of the core: a view of the caller's arrays, and the steps between two returns.
class SqpRun {
 public:
  /// `memory` is that of the arguments, which have passed their checks; both are referred to.
  SqpRun(const SqpArguments& arguments, SqpMemory& memory);

  /// Goes on where IFAIL says, up to the next request for values or the end, and stores the state.
  void Continue();

  /// For the final tables.
  const SqpArguments& Arguments() const { return a_; }
  const SqpMemory& Memory() const { return memory_; }
  const SqpNumbers& Numbers() const { return numbers_; }
  const SqpCounts& Counts() const { return counts_; }

 private:
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

  const SqpArguments& a_;
  Eigen::Index n_, m_;

  // Constants of the run.
  double accqp_, tol_, beta_;
  std::int32_t max_trials_;

  SqpMemory& memory_;
  SqpNumbers numbers_;  ///< read from the memory at the start of a call, written at its end
  SqpCounts counts_;

  // The caller's arrays.
  MatrixMap points_, values_, dg_, c_;
  SqpMemory::Vector df_, u_;  ///< N; M + 2N

  // Of this iteration.
  double delta_ = 0.0, kkt_ = 0.0, violation_ = 0.0, lagrangian_norm_ = 0.0;
  bool fall_back_ = false;
};

/// Texts for the standard output, whatever the unit IOUT; only with IPRINT above 0.
void PrintSqpWarning(const SqpArguments& a, const char* text);
void PrintSqpResult(const SqpRun& run);

}  // namespace corvath::algorithm::optimizer
