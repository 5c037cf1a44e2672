#pragma once

#include "study/project/project.h"
#include "study/result.h"

#include <string>
#include <vector>

namespace corvath::study {

/// Measured and cross-validated values of outputs at the designs of their models, see
/// zelstudy_residuals().
Result Residuals(const Project& project, const std::vector<std::string>& outputs);

}  // namespace corvath::study
