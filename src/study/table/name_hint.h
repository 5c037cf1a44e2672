#pragma once

#include <string>
#include <vector>

namespace corvath::study {

/// `text` with its ASCII letters in lower case.
std::string Lower(std::string text);

/// The name with the fewest letters to change; null if `name` is another word altogether.
const std::string* FindNear(const std::string& name, const std::vector<std::string>& names);

/// What to tell about a name that is none of `names`: "did you mean "length"?" where one is near,
/// "<list> "a", "b", ..." otherwise.
std::string NameHint(const std::string& name, const std::vector<std::string>& names,
                     const std::string& list);

}  // namespace corvath::study
