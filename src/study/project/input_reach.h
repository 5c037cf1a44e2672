#pragma once

#include "study/project/project.h"

#include <vector>

namespace corvath::study {

/// The values of each input at which the project is asked to predict: the range of its designs, and
/// of a random input whatever its distribution gives but once in a billion to either side. A sample
/// of the distributions leaves the range of the few designs that a study has; that is no slip.
/// @param bounds  the ranges of the designs
std::vector<Bounds> ReachOfInputs(const Project& project, std::vector<Bounds> bounds);

}  // namespace corvath::study
