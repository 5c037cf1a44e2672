#pragma once

#include "calculator/macro.h"

#include <boost/filesystem/path.hpp>

#include <string>

namespace corvath::calculator {

/// Where the user's macros lie: Corvath/calculator/macros.def in the roaming application data
/// directory, see utils::GetAppDataPath().
/// @throws corvath::utils::runtime_error  there is no such directory
boost::filesystem::path GetMacroFilePath();

struct MacroFileContent {
  CalculatorTypeTraits::Macros macros;
  bool exists = false;
  std::string problem;  ///< why no further macros could be read; empty if all were
};

/// Reads a macro file: a Boost.Serialization XML archive that holds the set "macros". Of a damaged
/// file those macros count that stand in front of the damage. Of one name the first macro counts.
/// Files of more than 16 MiB are none of ours.
MacroFileContent ReadMacroFile(const boost::filesystem::path& path);

/// The macros of a file, by default the user's; none where there is no file. Never fails: a damaged
/// file is no reason to refuse a text that does not need it.
CalculatorTypeTraits::Macros LoadMacros(const boost::filesystem::path& path = {});

/// Writes a macro file, an empty path meaning the user's; creates the directories that are missing.
/// A failure leaves an old file as it is.
/// @throws std::runtime_error  the file cannot be written, see utils::ReplacementFile; or there is
///         no application data directory
/// @throws std::domain_error   a text holds what is no character
void SaveMacros(const boost::filesystem::path& path, const CalculatorTypeTraits::Macros& macros);

}  // namespace corvath::calculator
