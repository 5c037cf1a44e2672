#pragma once

#include "archive/serialization.h"

#include <Eigen/Core>
#include <boost/variant.hpp>

#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace corvath::math::metamodel {

/// How the models were tested; carried from file to file.
namespace TestingType {
enum eTestingType : std::int32_t {};
}

/// One value of a free-form setting, in the order of the stored alternatives.
using SettingValue = boost::variant<double, std::int64_t, std::wstring, bool>;

/// Which model families were allowed when a project's models were selected, and at what order. The
/// record travels with the project; predictions come from the stored models alone.
class MetamodelSettings {
 public:
  MetamodelSettings() = default;
  MetamodelSettings(const MetamodelSettings&) = default;
  MetamodelSettings& operator=(const MetamodelSettings&) = default;
  virtual ~MetamodelSettings() = default;

  /// A copy of the most derived class.
  virtual std::unique_ptr<MetamodelSettings> Clone() const;
  /// Same class and the same fields, doubles up to a relative 2^-52 (see IsClose); the two limits
  /// also count as equal where both are infinite, of any sign.
  virtual bool IsNearlyEqual(const MetamodelSettings& other) const;
  /// Same class and exactly the same fields; a NaN is unequal to itself.
  virtual bool IsEqual(const MetamodelSettings& other) const;

  bool use_boxcox_ = true;
  bool use_interpolation_ = false;
  bool use_polynomials_ = true;
  std::uint64_t max_order_polynomial_ = 2;
  bool use_MLS_ = true;
  std::uint64_t max_order_MLS_ = 2;
  bool use_anisotropic_MLS_ = false;
  bool use_Kriging_ = true;
  bool use_anisotropic_Kriging_ = false;
  bool use_ASCMO_ = false;
  TestingType::eTestingType testing_type_{};
  double coeff_factor_poly_ = 2.0;
  double coeff_factor_mls_ = 8.0;
  double coeff_factor_kriging_ = 8.0;
  double coeff_factor_ASCMO_ = 8.0;
  std::map<std::wstring, bool> custom_;
  bool use_limits_ = false;
  std::pair<double, double> limits_{-std::numeric_limits<double>::infinity(),
                                    std::numeric_limits<double>::infinity()};
  std::map<std::wstring, std::map<std::wstring, SettingValue>> custom_settings_;
  std::map<std::wstring, SettingValue> skv_variables_;

 private:
  friend class boost::serialization::access;
  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

}  // namespace corvath::math::metamodel

ZEL_CLASS_VERSION(corvath::math::metamodel::MetamodelSettings, 4)
ZEL_EXPORT_KEY(corvath::math::metamodel::MetamodelSettings,
               "::corvath::math::metamodel::MetamodelSettings")
