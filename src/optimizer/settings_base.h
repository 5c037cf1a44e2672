#pragma once

#include "archive/serialization.h"
#include "foundation/log.h"

#include <Eigen/Core>

#include <cstdint>
#include <vector>

namespace corvath::algorithm::optimizer {

/// What every optimiser must know of a problem: its sizes, bounds and start designs. The one scalar
/// type is double.
template <class T>
class OptimizerSettingsBase;

template <>
class OptimizerSettingsBase<double> {
 public:
  using Matrix = Eigen::MatrixXd;
  using Vector = Eigen::VectorXd;

  virtual ~OptimizerSettingsBase() = default;

  /// All members but the four numbers to their defaults: no bounds, one start design in the middle.
  virtual void Reset();

  /// Warnings go to `logger`, which may be null.
  /// @throws utils::runtime_error  the first thing that an optimiser could not work with
  virtual void Check(utils::LogBase* logger) const;

  /// The most iterations of a run.
  virtual std::uint64_t GetMaxNumFunctionCalls() const = 0;

  /// Resets parameter types and discrete states as well; other vectors keep their size.
  virtual void SetNumberInputs(std::uint64_t number);
  virtual void SetNumberObjectives(std::uint64_t number) { nobjectives_ = number; }
  virtual void SetNumberEqualities(std::uint64_t number) { nequalities_ = number; }
  virtual void SetNumberInequalities(std::uint64_t number) { ninequalities_ = number; }

  /// No bounds: the lowest double for each input, and below the largest one. In the inputs' units.
  virtual void ResetLowerBounds();
  virtual void SetLowerBounds(const Vector& bounds) { lowerbounds_ = bounds; }
  virtual void ResetUpperBounds();
  virtual void SetUpperBounds(const Vector& bounds) { upperbounds_ = bounds; }

  /// Types and states are stored for the algorithms that know them; the gradient-based one reads
  /// neither.
  virtual void ResetParameterTypes();
  virtual void SetParameterTypes(const std::vector<std::int32_t>& types) {
    parameter_types_ = types;
  }
  virtual void ResetDiscreteStates();
  /// @throws std::logic_error  `index` is not that of an input
  virtual void SetDiscreteState(std::uint64_t index, const Vector& states);

  /// One design in the middle of the bounds.
  virtual void ResetStartDesigns();
  /// One row per design, one column per input.
  virtual void SetStartDesigns(const Matrix& designs) { start_designs_ = designs; }

  /// Same dynamic type and same values; a NaN equals a NaN.
  virtual bool Equals(const OptimizerSettingsBase& other) const;
  virtual OptimizerSettingsBase* Clone() const = 0;

  std::uint64_t GetNumberInputs() const { return ninputs_; }
  std::uint64_t GetNumberObjectives() const { return nobjectives_; }
  std::uint64_t GetNumberEqualities() const { return nequalities_; }
  std::uint64_t GetNumberInequalities() const { return ninequalities_; }
  const Matrix& GetStartDesigns() const { return start_designs_; }
  const Vector& GetLowerBounds() const { return lowerbounds_; }
  const Vector& GetUpperBounds() const { return upperbounds_; }
  const std::vector<std::int32_t>& GetParameterTypes() const { return parameter_types_; }
  const std::vector<Vector>& GetDiscreteStates() const { return discrete_states_vector_; }

 protected:
  OptimizerSettingsBase(std::uint64_t ninputs, std::uint64_t nobjectives, std::uint64_t nequalities,
                        std::uint64_t ninequalities);
  OptimizerSettingsBase(const OptimizerSettingsBase&) = default;
  OptimizerSettingsBase& operator=(const OptimizerSettingsBase&) = default;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::uint64_t ninputs_;
  std::uint64_t nobjectives_;
  std::uint64_t nequalities_;
  std::uint64_t ninequalities_;
  Matrix start_designs_;
  Vector lowerbounds_;
  Vector upperbounds_;
  std::vector<std::int32_t> parameter_types_;   ///< one per input
  std::vector<Vector> discrete_states_vector_;  ///< one per input
};

}  // namespace corvath::algorithm::optimizer

ZEL_CLASS_VERSION(corvath::algorithm::optimizer::OptimizerSettingsBase<double>, 1)
ZEL_EXPORT_KEY(corvath::algorithm::optimizer::OptimizerSettingsBase<double>,
               "::corvath::algorithm::optimizer::OptimizerSettingsBase < "
               "corvath::algorithm::float_type >")
