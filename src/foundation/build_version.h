#pragma once

#include <cstdint>
#include <string>

namespace corvath::utils {

/// What this build calls itself; the build supplies the values (src/foundation/CMakeLists.txt).
struct BuildVersion {
  std::uint32_t major;
  std::uint32_t minor;
  std::uint32_t maintenance;
  std::uint32_t packed;   ///< major << 16 | minor << 8 | maintenance
  std::uint32_t build;    ///< build number
  std::string text;       ///< "major.minor.maintenance"
  std::string suffix;     ///< such as "beta 2"; empty for a release
  std::string full_text;  ///< "major.minor.maintenance (build)"
  std::string date;       ///< day of the build, ISO 8601
};

/// The record of this build; lives from loading to unloading.
const BuildVersion& GetBuildVersion();

}  // namespace corvath::utils
