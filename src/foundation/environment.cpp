#include "foundation/environment.h"

#include "foundation/exception.h"
#include "foundation/text.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>

namespace corvath::utils {
namespace {

std::optional<std::wstring> FindValue(const std::wstring& name) {
  const char* value = std::getenv(ToUtf8(name).c_str());
  if (value == nullptr) return std::nullopt;
  return FromUtf8(value);
}

}  // namespace

std::wstring GetEnvironmentValue(const std::wstring& name) {
  const auto value = FindValue(name);
  if (!value) throw runtime_error(L"Environment variable \"" + name + L"\" doesn't exist.");
  return *value;
}

std::wstring GetAppDataPath(int location) {
  if (location != 0 && location != 1)
    throw std::logic_error("GetAppDataPath: unknown location requested");
  const bool local = location == 0;
  const std::wstring variable = local ? L"LOCALAPPDATA" : L"APPDATA";
  const auto own = FindValue(variable);
  if (own && !own->empty()) return *own;  // an empty one would mean the current directory
  const auto xdg = FindValue(local ? L"XDG_DATA_HOME" : L"XDG_CONFIG_HOME");
  if (xdg && !xdg->empty() && xdg->front() == L'/') return *xdg;
  if (const auto home = FindValue(L"HOME"); home && !home->empty())
    return *home + (local ? L"/.local/share" : L"/.config");
  return GetEnvironmentValue(variable);
}

}  // namespace corvath::utils
