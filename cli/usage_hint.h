#pragma once

#include <string>

namespace CLI {
class App;
}

namespace cli {

/// What to tell about a word of the command line that is no command, or no option of its command:
/// "no command "trian"; did you mean "train"?". Empty if there is none.
/// @param app  after its parse() has failed
std::string UsageHint(const CLI::App& app);

}  // namespace cli
