#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace cli {

// Options that several commands have, with one text each. What they fill outlives the command.

/// The project file, a command's one positional argument.
void AddProject(CLI::App& command, std::string& file);

/// --hash, the signature that the project must have.
void AddSignature(CLI::App& command, std::string& hash);

void AddQuiet(CLI::App& command, bool& quiet, const char* text = "Print errors alone");

/// An option that may stand several times, each time with one value.
/// @param type  what a value is, in capitals
CLI::Option* AddRepeated(CLI::App& command, const char* name, const char* type,
                         std::vector<std::string>& values, const char* text);

/// --json and --csv, which cannot both go to standard output.
void AddJsonAndCsv(CLI::App& command, bool& json, const char* json_text, std::string& csv,
                   const char* csv_text);

}  // namespace cli
