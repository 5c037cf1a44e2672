#pragma once

#include "exchange/c_names.h"
#include "exchange/project_description.h"

#include <string>

namespace corvath::exchange {

/// The head of a generated C file: the comment that tells what stands where, and declarations.
std::string CHead(const ProjectDescription& project, const CNames& names);

/// Definitions of the tables of names and bounds, and of what asks for the range.
/// @throws NotDescribable  a name is longer than a C string may be
std::string CTables(const ProjectDescription& project, const CNames& names);

}  // namespace corvath::exchange
