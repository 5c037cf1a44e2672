#pragma once

#include <string>

namespace corvath::study {

/// How messages name an option: to somebody at a command line, or to somebody who programs.
enum class Wording { kKeys, kCommandLine };

/// "skip_incomplete" or "--skip-incomplete".
inline std::string OptionName(Wording wording, std::string key) {
  if (wording == Wording::kKeys) return key;
  if (key == "ignored") key = "ignore";
  for (char& c : key)
    if (c == '_') c = '-';
  return "--" + key;
}

}  // namespace corvath::study
