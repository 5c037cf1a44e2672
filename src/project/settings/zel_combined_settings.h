#pragma once

#include "archive/serialization.h"
#include "project/settings/zel_advanced_settings.h"
#include "project/settings/zel_automatic_settings.h"
#include "project/settings/zel_data.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace corvath::zel {

/// Which of the settings were in use; carried from file to file.
enum eSettingsType : std::int32_t {};

/// All settings with which a project's models were made, and the only entry point to them.
struct ZELCombinedSettings {
  explicit ZELCombinedSettings(eSettingsType type = eSettingsType{}) : settings_type_(type) {}

  eSettingsType settings_type_;
  ZELData data_;
  bool show_pp_ = false;
  ZELAutomaticSettings automatic_settings_;
  ZELAdvancedSettings advanced_settings_;
  double default_parameter_bounds_adjustment_min_ = 0.01;
  double default_parameter_bounds_adjustment_max_ = 0.01;
  std::map<std::wstring, std::pair<double, double>> limits_;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

bool operator==(const ZELCombinedSettings& a, const ZELCombinedSettings& b);

}  // namespace corvath::zel

ZEL_CLASS_VERSION(corvath::zel::ZELCombinedSettings, 2)
ZEL_TRACK_ALWAYS(corvath::zel::ZELCombinedSettings)
ZEL_EXPORT_KEY(corvath::zel::ZELCombinedSettings, "corvath::zel::ZELCombinedSettings")
