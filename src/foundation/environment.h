#pragma once

#include <string>

namespace corvath::utils {

/// The value of environment variable `name`, taken as UTF-8.
/// @throws corvath::utils::runtime_error `Environment variable "<name>" doesn't exist.`
std::wstring GetEnvironmentValue(const std::wstring& name);

/// The user's application data directory: 0 local, 1 roaming. The variables LOCALAPPDATA and
/// APPDATA win where they are set and not empty; otherwise the XDG base directories: XDG_DATA_HOME
/// or ~/.local/share for 0, XDG_CONFIG_HOME or ~/.config for 1 (a relative XDG value is ignored).
/// @throws std::logic_error               another `location`
/// @throws corvath::utils::runtime_error  neither of the variables nor HOME is set
std::wstring GetAppDataPath(int location);

}  // namespace corvath::utils
