#pragma once

#include "optimizer/settings_gradient.h"

namespace corvath::algorithm::optimizer {

/// Numerical differences; the numbers are those of stored settings.
enum class NumericalDifferences : std::int32_t {
  kCentral = 0,
  kForward = 1,
  kBackward = 2,
  kFivePoint = 3
};

/// Settings of OptimizerNLPQLP: one objective, one start design.
template <class T>
class OptimizerSettingsNLPQLP;

template <>
class OptimizerSettingsNLPQLP<double> : public OptimizerSettingsGradientBase<double> {
 public:
  explicit OptimizerSettingsNLPQLP(std::uint64_t ninputs = 0, std::uint64_t nobjectives = 1,
                                   std::uint64_t nequalities = 0, std::uint64_t ninequalities = 0);

  void Reset() override;
  void Check(utils::LogBase* logger) const override;
  bool Equals(const OptimizerSettingsBase<double>& other) const override;
  OptimizerSettingsNLPQLP* Clone() const override { return new OptimizerSettingsNLPQLP(*this); }

  /// Designs per round of the line search; 0 is taken as 1.
  virtual void SetNumberParallel(std::uint64_t number) { nparallel_ = number == 0 ? 1 : number; }
  /// Merit values that the non-monotone line search remembers; 0 switches it off.
  virtual void SetStackSize(std::uint64_t size) { nonmonotonous_line_search_stack_size_ = size; }
  virtual void SetNumericalDifferences(NumericalDifferences type) { numerical_differences_ = type; }
  /// Whether the first step is held near `max_stepsize_` through the first quasi-Newton matrix.
  virtual void SetUseInitialStepsizeLimit(bool use) { use_initial_stepsize_limit_ = use; }
  virtual void SetMaxStepsize(double size);
  virtual void SetMaxStepsize(const Vector& sizes) { max_stepsize_ = sizes; }
  /// Smallest step of a parallel line search relative to the full one; 0 chooses it automatically.
  virtual void SetMinStepsize(double size) { min_stepsize_ = size; }

  /// Step of the numerical differences, the same for every input, in units of the input.
  void SetGradientDx(double dx);
  void SetGradientDx(const Vector& dx) { gradient_dx_ = dx; }

  std::uint64_t GetNumberParallel() const { return nparallel_; }
  const Vector& GetGradientDx() const { return gradient_dx_; }
  std::uint64_t GetStackSize() const { return nonmonotonous_line_search_stack_size_; }
  NumericalDifferences GetNumericalDifferences() const { return numerical_differences_; }
  bool GetUseInitialStepsizeLimit() const { return use_initial_stepsize_limit_; }
  const Vector& GetMaxStepsize() const { return max_stepsize_; }
  double GetMinStepsize() const { return min_stepsize_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  void ResetOwn();

  std::uint64_t nparallel_ = 1;
  Vector gradient_dx_;  ///< one per input
  std::uint64_t nonmonotonous_line_search_stack_size_ = 10;
  NumericalDifferences numerical_differences_ = NumericalDifferences::kCentral;
  bool use_initial_stepsize_limit_ = false;
  Vector max_stepsize_;  ///< one per input
  double min_stepsize_ = 0.0;
};

}  // namespace corvath::algorithm::optimizer

ZEL_CLASS_VERSION(corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>, 2)
ZEL_EXPORT_KEY(corvath::algorithm::optimizer::OptimizerSettingsNLPQLP<double>,
               "::corvath::algorithm::optimizer::OptimizerSettingsNLPQLP < "
               "corvath::typedefs::float_type >")
