#pragma once

#include "project/vrdb.h"

#include <Eigen/Core>

namespace bench {

/// A project of made-up numbers: `num_designs` designs over `num_inputs` inputs, and one vector
/// response of `num_models` elements, each served by a quadratic polynomial with interactions
/// (with cross-validated errors; half of its file is the models' matrices at the least).
corvath::algorithm::datatypes::VRDB MakeWideProject(Eigen::Index num_designs,
                                                    Eigen::Index num_inputs,
                                                    Eigen::Index num_models);

}  // namespace bench
