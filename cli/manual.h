#pragma once

#include <string>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace cli {

/// What an option or positional takes, as help names it: its type name ("CSV"), for a positional
/// without one its own name ("PROJECT"); empty for a flag. The completion goes by it as well.
std::string ValueName(const CLI::Option& option);

/// The manual page of the program in the language man(7), made from what --help tells: of the
/// program, then of each of its commands in their order. A paragraph of a description that begins
/// with a blank keeps its lines; a paragraph "Word word: text" of the footer is a section.
std::string ManualPage(const CLI::App& app);

}  // namespace cli
