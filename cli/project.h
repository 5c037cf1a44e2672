#pragma once

#include "project/vrdb.h"

#include <zelsolver/zelsolver.hpp>

#include <string>

namespace cli {

using zelsolver::Project;

/// Opens the file through the library. @param hash  expected signature; empty: not checked
/// @throws Refusal, zelsolver::Error  with the reason
Project OpenProject(const std::string& file, const std::string& hash);

/// All that the file holds. The library tells names and numbers; units, distributions and what
/// `zel train` keeps about a table stand here alone.
corvath::algorithm::datatypes::VRDB ReadRecord(const Project& project);

}  // namespace cli
