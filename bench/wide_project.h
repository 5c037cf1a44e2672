#pragma once

#include "metamodel/surrogate.h"
#include "project/vrdb.h"

#include <Eigen/Core>
#include <boost/shared_ptr.hpp>

#include <vector>

namespace bench {

/// A project of inputs x0, x1, ... and one vector response.
/// @param points  n x m: its designs, within [-1, 1]
/// @param values  n x k
/// @param models  k: of the elements of the response, built
corvath::algorithm::datatypes::VRDB MakeProject(
    const Eigen::MatrixXd& points, const Eigen::MatrixXd& values,
    const std::vector<boost::shared_ptr<corvath::math::metamodel::SurrogateBase>>& models);

/// A project of made-up numbers: `num_designs` designs over `num_inputs` inputs, and one vector
/// response of `num_models` elements, each served by a quadratic polynomial with interactions
/// (with cross-validated errors; half of its file is the models' matrices at the least).
corvath::algorithm::datatypes::VRDB MakeWideProject(Eigen::Index num_designs,
                                                    Eigen::Index num_inputs,
                                                    Eigen::Index num_models);

}  // namespace bench
