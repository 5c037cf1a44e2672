#pragma once

#include "study/progress.h"
#include "study/project/project.h"
#include "study/result.h"

#include <cstddef>
#include <string>
#include <vector>

namespace corvath::study {

/// Predictions at designs in memory; names are outputs of the project.
struct ArraySolveRequest {
  std::vector<std::string> responses;
  std::vector<std::string> errors;
  std::vector<std::string> densities;
  std::vector<std::string> gradients;
  bool criteria = false;
  bool extrapolate = false;
};

/// See zelstudy_solve().
/// @param inputs  n * m values, design after design
/// @throws Refusal    a value is out of reach
/// @throws Cancelled  `progress` said so
Result SolveArray(const Project& project, const ArraySolveRequest& request, const double* inputs,
                  std::size_t n, const Progress& progress);

}  // namespace corvath::study
