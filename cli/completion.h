#pragma once

#include <string>

namespace CLI {
class App;
}

namespace cli {

/// Completion of the program's command lines for bash, made from what --help tells: commands,
/// options, names of sampling schemes and functions, and files by what an option takes (see
/// ValueName): PROJECT and CSV by their endings, FILE any.
std::string BashCompletion(const CLI::App& app);

}  // namespace cli
