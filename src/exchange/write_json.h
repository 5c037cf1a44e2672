#pragma once

#include "exchange/json_writer.h"
#include "exchange/project_description.h"

#include <string>

namespace corvath::exchange {

/// The number that a document carries as "version". A reader of version n reads all documents of
/// it: members may be added under one version, none change their meaning or go.
constexpr int kModelJsonVersion = 1;

/// The document of docs/model-json.md, UTF-8.
std::string WriteJson(const ProjectDescription& project);

/// The same as the next value of a larger document.
void WriteJson(const ProjectDescription& project, JsonWriter& json);

}  // namespace corvath::exchange
