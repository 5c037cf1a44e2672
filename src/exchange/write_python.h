#pragma once

#include "exchange/project_description.h"

#include <string>

namespace corvath::exchange {

/// The models as one Python module that needs numpy alone: docs/export.md says what it defines.
/// @param project  with inputs and responses
std::string WritePython(const ProjectDescription& project);

}  // namespace corvath::exchange
