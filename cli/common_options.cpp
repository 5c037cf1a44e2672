#include "common_options.h"

#include <CLI/CLI.hpp>

namespace cli {

void AddProject(CLI::App& command, std::string& file) {
  command.add_option("PROJECT", file, "Project file (.vrdb)")->required()->type_name("");
}

void AddSignature(CLI::App& command, std::string& hash) {
  command.add_option("--hash", hash, "Refuse PROJECT unless this is its signature (see zel hash)")
      ->type_name("SHA512");
}

void AddQuiet(CLI::App& command, bool& quiet, const char* text) {
  command.add_flag("--quiet", quiet, text);
}

CLI::Option* AddRepeated(CLI::App& command, const char* name, const char* type,
                         std::vector<std::string>& values, const char* text) {
  return command.add_option(name, values, text)->type_name(type)->allow_extra_args(false);
}

void AddJsonAndCsv(CLI::App& command, bool& json, const char* json_text, std::string& csv,
                   const char* csv_text) {
  auto* const flag = command.add_flag("--json", json, json_text);
  command.add_option("--csv", csv, csv_text)
      ->type_name("CSV")
      ->each([flag](const std::string& path) {
        if (path == "-" && flag->count() > 0) throw CLI::ExcludesError("--csv -", "--json");
      });
}

}  // namespace cli
