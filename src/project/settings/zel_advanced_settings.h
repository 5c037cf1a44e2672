#pragma once

#include "archive/serialization.h"
#include "design/designs/design_entry.h"
#include "design/named_sequence.h"
#include "project/settings/zel_settings.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <list>
#include <map>
#include <string>

namespace corvath::zel {

/// Settings of the advanced mode.
struct ZELAdvancedSettings {
  using EntrySequence = algorithm::datatypes::EntrySequence;

  static constexpr char kDefaultLogFile[] = "message_log.txt";

  std::uint64_t num_parallel_ = 4;
  bool use_incomplete_ = true;
  bool adapt_bounds_ = true;
  double adapt_bounds_safety_factor_ = 0.0;
  math::metamodel::ZELSettings pzel_settings_;
  std::list<std::wstring> custom_surrogates_;
  bool log_in_project_log_ = false;
  bool log_in_file_ = false;
  boost::filesystem::path log_file_path_ = kDefaultLogFile;
  bool write_function_string_ = false;
  bool write_cv_values_ = false;
  std::wstring cv_values_suffix_ = L"_cv";
  std::map<std::wstring, EntrySequence> zel_custom_id_settings_container_;
  std::map<std::wstring, bool> zel_custom_id_usage_container_;
  bool export_fmu_ = false;

  template <class Archive>
  void serialize(Archive& ar, unsigned int version);
};

bool operator==(const ZELAdvancedSettings& a, const ZELAdvancedSettings& b);

}  // namespace corvath::zel

ZEL_CLASS_VERSION(corvath::zel::ZELAdvancedSettings, 2)
ZEL_TRACK_ALWAYS(corvath::zel::ZELAdvancedSettings)
ZEL_EXPORT_KEY(corvath::zel::ZELAdvancedSettings, "corvath::zel::ZELAdvancedSettings")
