#pragma once

#include "exchange/c_names.h"
#include "exchange/project_description.h"

#include <set>
#include <string>

namespace corvath::exchange {

/// A function of each criterion, and that of all; nothing where there are none.
/// @param needed  the helpers that they call are added
std::string CCriteria(const ProjectDescription& project, const CNames& names,
                      std::set<std::string>& needed);

}  // namespace corvath::exchange
