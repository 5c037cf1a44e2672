#pragma once

#include "archive/serialization.h"
#include "stochastics/random_variable.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace corvath::algorithm::datatypes {

/// Name of the statistical moment at position `number`, counted from 1: "Mean value", "Standard
/// deviation", "Skewness", "Excess kurtosis", then "5-th moment" and so on.
/// @throws std::out_of_range  `number` is 0
std::wstring GetMomentName(std::size_t number);

/// The random side of a parameter: the distribution in which it scatters, as the project stores it.
/// Which of the two descriptions counts, parameters or moments, is decided where it becomes a live
/// random variable (random_conversion.h). Numbers that this class does not know pass through.
class RandomProperties {
 public:
  /// NORMAL without a random side: kind 0, no parameters, moments or coefficient of variation.
  RandomProperties() = default;

  enums::RandomVariable::eType GetType() const { return type_; }
  void SetType(enums::RandomVariable::eType type) { type_ = type; }

  /// 0: the parameter has no random side; any other number: it has one.
  std::int32_t GetKind() const { return kind_; }
  void SetKind(std::int32_t kind) { kind_ = kind; }

  /// Distribution parameters, in the order of the type's parameter names.
  const std::vector<double>& GetParams() const { return params_; }
  void SetParams(std::vector<double> params) { params_ = std::move(params); }

  /// Statistical moments, in the order of the type's moment names.
  const std::vector<double>& GetMoments() const { return moments_; }
  void SetMoments(std::vector<double> moments) { moments_ = std::move(moments); }

  /// Whether the coefficient of variation is set; the standard deviation then follows from it.
  bool HasCov() const { return has_set_cov_; }
  /// The coefficient of variation.
  /// @throws corvath::utils::runtime_error  it is not set
  double GetCov() const;
  void SetCov(double cov);

  bool IsValidated() const { return validated_; }
  void SetValidated(bool validated) { validated_ = validated; }

  /// Compares all but `validated_`; numbers within 2.22e-13 relative, two NaNs are equal. With a
  /// coefficient of variation the stored standard deviation does not count.
  bool operator==(const RandomProperties& other) const;
  bool operator!=(const RandomProperties& other) const { return !(*this == other); }

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);

  enums::RandomVariable::eType type_ = enums::RandomVariable::NORMAL;
  std::int32_t kind_ = 0;
  std::vector<double> params_;
  std::vector<double> moments_;
  bool has_set_cov_ = false;
  double cov_ = 0.0;
  bool validated_ = true;
};

}  // namespace corvath::algorithm::datatypes

ZEL_CLASS_VERSION(corvath::algorithm::datatypes::RandomProperties, 4)
