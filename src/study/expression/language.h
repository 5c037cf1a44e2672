#pragma once

#include <json/json.h>

#include <string>
#include <vector>

namespace corvath::study {

/// The names of all functions of expressions, ascending.
std::vector<std::string> FunctionNames();
/// Functions and constants by group, see zelstudy_functions().
Json::Value FunctionsDocument();

/// Signatures, text and arguments of a function of expressions, or what a constant means.
/// @throws Refusal  there is none of this name; the message shows near ones
std::string HelpText(const std::string& function);
/// The same, see zelstudy_help().
Json::Value HelpDocument(const std::string& function);

/// The macros that expressions can call, see zelstudy_macros().
Json::Value MacrosDocument();

}  // namespace corvath::study
