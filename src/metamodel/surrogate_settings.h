#pragma once

#include "archive/serialization.h"
#include "foundation/log.h"
#include "metamodel/transforms/transform.h"
#include "metamodel/types.h"

#include <cstdint>
#include <list>
#include <string>
#include <vector>

namespace corvath::math::metamodel {

/// How settings came to their values.
enum class SettingsState : std::int32_t {
  kFresh = 0,
  kReplaced = 1,   ///< replaced by ones that differ from the class defaults
  kOptimized = 2,  ///< free parameters were chosen by BuildOptimal
};

/// What the settings of every surrogate have in common: number of inputs and the three transforms.
/// A build writes the parameters that its transforms ended up with back, so that a copy of the
/// settings describes the model that was built.
class SurrogateSettingsBase {
 public:
  virtual ~SurrogateSettingsBase() = default;

  /// All members of this class to their defaults, the number of inputs excepted.
  virtual void Reset();

  /// @throws corvath::utils::runtime_error  settings that contradict each other; derived classes
  ///                                        may write the reason to `logger`, which may be null
  virtual void Check(utils::log::LogBase* logger) const;

  virtual void SetNumberInputs(std::uint64_t ninputs) { ninputs_ = ninputs; }
  virtual void SetCoordTransform(transform::TransformType type) { coord_transform_ = type; }
  virtual void SetValueTransform(transform::TransformType type) { value_transform_ = type; }
  virtual void SetLimitTransform(transform::TransformType type) { limit_transform_ = type; }
  virtual void SetCoordTransformParameter(const std::vector<double>& parameter) {
    coord_transform_parameter_ = parameter;
  }
  virtual void SetValueTransformParameter(const std::vector<double>& parameter) {
    value_transform_parameter_ = parameter;
  }
  virtual void SetLimitTransformParameter(const std::vector<double>& parameter) {
    limit_transform_parameter_ = parameter;
  }

  /// Which inputs the model uses: one bit per input.
  virtual BitVector GetVariableSelection() const = 0;
  /// Clears all that belongs to inputs whose bit is 0.
  virtual void SetVariableSelection(const BitVector& bits) = 0;
  virtual BitVector GetMainTermSelection() const = 0;       ///< a bit per term; may be empty
  virtual BitVector GetInteractionSelection() const = 0;    ///< a bit per pair; may be empty
  virtual std::uint64_t GetOrder() const = 0;               ///< of the polynomial, 0 without one
  virtual std::uint64_t GetNumberCoefficients() const = 0;  ///< of the trend, the constant included
  /// Free parameters of the whole model, those of kernel and value transform included.
  virtual std::uint64_t GetNumberParameters() const = 0;
  /// Rank of the model's flexibility, for comparing candidates.
  virtual std::uint64_t GetComplexity() const = 0;

  /// Same class and same values, the state and the failed-design handling excepted.
  virtual bool Equals(const SurrogateSettingsBase& other) const;

  /// A copy, owned by the caller.
  virtual SurrogateSettingsBase* Clone() const = 0;

  std::uint64_t GetNumberInputs() const { return ninputs_; }
  transform::TransformType GetCoordTransform() const { return coord_transform_; }
  transform::TransformType GetValueTransform() const { return value_transform_; }
  transform::TransformType GetLimitTransform() const { return limit_transform_; }
  const std::vector<double>& GetCoordTransformParameter() const {
    return coord_transform_parameter_;
  }
  const std::vector<double>& GetValueTransformParameter() const {
    return value_transform_parameter_;
  }
  const std::vector<double>& GetLimitTransformParameter() const {
    return limit_transform_parameter_;
  }
  SettingsState GetState() const { return state_; }
  void SetState(SettingsState state) { state_ = state; }
  const std::list<std::wstring>& GetInputNames() const { return input_names_; }
  void SetInputNames(const std::list<std::wstring>& names) { input_names_ = names; }

  /// Whether the parameters of the value transform describe a real Box-Cox transform: a first one
  /// (lambda) that differs from 1 by more than 1e-10.
  bool HasBoxCoxParameter() const;

 protected:
  explicit SurrogateSettingsBase(std::uint64_t ninputs = 0) : ninputs_(ninputs) {}
  SurrogateSettingsBase(const SurrogateSettingsBase&) = default;
  SurrogateSettingsBase& operator=(const SurrogateSettingsBase&) = default;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  std::uint64_t ninputs_;
  transform::TransformType coord_transform_ = transform::TransformType::kMinMax;
  std::vector<double> coord_transform_parameter_;
  transform::TransformType value_transform_ = transform::TransformType::kNone;
  std::vector<double> value_transform_parameter_;
  std::int32_t handle_failed_ = 0;  ///< carried along; nothing here reads it
  SettingsState state_ = SettingsState::kFresh;
  transform::TransformType limit_transform_ = transform::TransformType::kNone;
  std::vector<double> limit_transform_parameter_;
  std::list<std::wstring> input_names_;  ///< for the model function
};

/// Number of set bits.
std::uint64_t CountBits(const BitVector& bits);

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::SurrogateSettingsBase, 2)
ZEL_EXPORT_KEY(corvath::math::metamodel::SurrogateSettingsBase,
               "::corvath::math::metamodel::SurrogateSettingsBase")
