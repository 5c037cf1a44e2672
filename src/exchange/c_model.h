#pragma once

#include "exchange/c_names.h"
#include "exchange/project_description.h"

#include <set>
#include <string>

namespace corvath::exchange {

/// The functions of response k, with their tables.
/// @param needed  the helpers that they call are added
std::string CModel(const ProjectDescription& project, std::size_t k, const CNames& names,
                   std::set<std::string>& needed);

}  // namespace corvath::exchange
