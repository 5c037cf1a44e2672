#pragma once

#include "optimizer/settings_base.h"

namespace corvath::algorithm::optimizer {

/// Adds what gradient-based optimisers share: a budget of designs and an accuracy.
template <class T>
class OptimizerSettingsGradientBase;

template <>
class OptimizerSettingsGradientBase<double> : public OptimizerSettingsBase<double> {
 public:
  explicit OptimizerSettingsGradientBase(std::uint64_t ninputs = 0, std::uint64_t nobjectives = 1,
                                         std::uint64_t nequalities = 0,
                                         std::uint64_t ninequalities = 0)
      : OptimizerSettingsBase<double>(ninputs, nobjectives, nequalities, ninequalities) {}

  void Reset() override;
  void Check(utils::LogBase* logger) const override;
  std::uint64_t GetMaxNumFunctionCalls() const override { return max_num_function_calls_; }
  bool Equals(const OptimizerSettingsBase<double>& other) const override;
  OptimizerSettingsGradientBase* Clone() const override {
    return new OptimizerSettingsGradientBase(*this);
  }

  /// Largest number of designs that a run may evaluate, those for gradients included.
  virtual void SetMaxNumFunctionCalls(std::uint64_t number) { max_num_function_calls_ = number; }
  /// Tolerance of the stopping test, in units of the objective.
  virtual void SetAccuracy(double accuracy) { accuracy_ = accuracy; }
  double GetAccuracy() const { return accuracy_; }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::uint64_t max_num_function_calls_ = 10000;
  double accuracy_ = 5e-6;
};

}  // namespace corvath::algorithm::optimizer

ZEL_EXPORT_KEY(corvath::algorithm::optimizer::OptimizerSettingsGradientBase<double>,
               "::corvath::algorithm::optimizer::OptimizerSettingsGradientBase < "
               "corvath::algorithm::float_type >")
