#pragma once

#include "exchange/project_description.h"

#include <string>
#include <vector>

namespace corvath::zel {
class ZELSolver;
}

namespace corvath::exchange {

/// @param solver     of a project that is loaded
/// @param path       of its file, for name and signature; empty: it has none
/// @param responses  which ones, UTF-8; empty: all
/// @throws NotDescribable  a response that the project does not have
ProjectDescription DescribeProject(zel::ZELSolver& solver, const std::string& path,
                                   const std::vector<std::string>& responses);

}  // namespace corvath::exchange
