#pragma once

#include <string>
#include <vector>

namespace cli {

/// What to tell about a name that is none of `names`: "did you mean "length"?" where one is near,
/// "<list> "a", "b", ..." otherwise.
std::string NameHint(const std::string& name, const std::vector<std::string>& names,
                     const std::string& list);

}  // namespace cli
