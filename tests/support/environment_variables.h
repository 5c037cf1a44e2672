#pragma once

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace support {

/// Takes the variables that decide where a user's files lie out of the environment, for as long as
/// it lives; then they are as before.
class UserDirectoryVariables {
 public:
  UserDirectoryVariables() {
    for (const char* name : kNames) {
      const char* value = std::getenv(name);
      if (value != nullptr) saved_.emplace_back(name, value);
      unsetenv(name);
    }
  }
  UserDirectoryVariables(const UserDirectoryVariables&) = delete;
  UserDirectoryVariables& operator=(const UserDirectoryVariables&) = delete;
  ~UserDirectoryVariables() {
    for (const char* name : kNames) unsetenv(name);
    for (const auto& [name, value] : saved_) setenv(name.c_str(), value.c_str(), 1);
  }

 private:
  static constexpr const char* kNames[] = {"LOCALAPPDATA", "APPDATA", "XDG_DATA_HOME",
                                           "XDG_CONFIG_HOME", "HOME"};
  std::vector<std::pair<std::string, std::string>> saved_;
};

}  // namespace support
