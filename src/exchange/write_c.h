#pragma once

#include "exchange/project_description.h"

#include <string>

namespace corvath::exchange {

/// The models as one file of C99 that needs nothing but <math.h> and allocates nothing: docs/export.md
/// says what it defines. Identifiers: `prefix`, then what Identifiers make of the names.
/// @param project  with inputs and responses
/// @param prefix  an identifier
/// @throws NotDescribable  a name is longer than a C string may be
std::string WriteC(const ProjectDescription& project, const std::string& prefix);

}  // namespace corvath::exchange
