#pragma once

#include "project/vrdb.h"

#include <zelsolver/zelsolver.hpp>

#include <string>
#include <vector>

namespace cli {

/// The values of each input at which the project is asked to predict: the range of its designs, and
/// of a random input whatever its distribution gives but once in a billion to either side. A sample
/// of the distributions leaves the range of the few designs that a study has; that is no slip.
/// @param inputs, bounds  names, and the ranges of the designs
std::vector<zelsolver::Bounds> ReachOfInputs(const corvath::algorithm::datatypes::VRDB& record,
                                             const std::vector<std::string>& inputs,
                                             std::vector<zelsolver::Bounds> bounds);

}  // namespace cli
