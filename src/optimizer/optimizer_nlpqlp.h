#pragma once

#include "optimizer/nlpqlp_interface.h"
#include "optimizer/optimizer_base.h"
#include "optimizer/settings_nlpqlp.h"

namespace corvath::algorithm::optimizer {

/// The SQP method as a loop of designs: every gradient becomes a stencil of designs, a design that
/// failed becomes a terrible one, and the best iterate is kept.
template <class T>
class OptimizerNLPQLP;

template <>
class OptimizerNLPQLP<double> : public OptimizerBase<double> {
 public:
  /// IFAIL beyond those of the core.
  static constexpr std::int32_t kStartFailed = 1001;
  static constexpr std::int32_t kGradientFailed = 1002;

  /// Starts a run, also after an earlier one.
  /// @throws std::bad_cast         `settings` are not OptimizerSettingsNLPQLP<double>
  /// @throws utils::runtime_error  they do not pass their Check
  void Initialize(const OptimizerSettingsBase<double>& settings) override;

  bool IsConverged() const override { return converged_; }

  /// One row: the solution of a converged run, else the last iterate that the method accepted;
  /// no rows before it accepted any.
  Matrix GetBestInputs() const override;
  Matrix GetBestObjectives() const override;
  Matrix GetBestEqualities() const override;
  Matrix GetBestInequalities() const override;
  /// The count of appraised designs. @throws utils::runtime_error  the run has not converged
  std::vector<std::uint64_t> GetBestIndex() const override;

  OptimizerNLPQLP* Clone() const override { return new OptimizerNLPQLP(*this); }

  /// Why the run ended: 0 converged, below 0 still running or out of budget, else an error of the
  /// core or one of the two above.
  std::int32_t GetFailure() const { return core_.IFAIL; }

 protected:
  void AppraiseStep() override;
  void AdaptStep() override;
  void FinalizeStep() override {}
  bool IsDone() const override;
  void OnSetInputs(const Matrix& designs) override;

 private:
  enum Phase { kStartStored = 0, kStartStencilOut = 1, kCoreRunning = 2 };

  void AppraiseStartStencil();
  void AppraiseGradientStencil();
  void AppraiseLineSearch();
  bool EstimateGradient(bool with_start);
  void LimitFirstStep();
  void StepCore();
  void FinishStep();
  void CheckRows(std::uint64_t rows) const;
  void TakeResponses(Eigen::Index row, Eigen::Index column);

  int phase_ = kStartStored;
  std::uint64_t budget_ = 0;
  Vector gradient_dx_;
  NumericalDifferences numerical_differences_ = NumericalDifferences::kCentral;
  bool use_initial_stepsize_limit_ = false;
  Vector max_stepsize_;
  bool converged_ = false;
  Matrix start_design_;
  Matrix best_inputs_, best_objectives_, best_equalities_, best_inequalities_;  ///< one row
  bool warned_of_displacement_ = false;
  NLPQLPInterface core_;
};

}  // namespace corvath::algorithm::optimizer
