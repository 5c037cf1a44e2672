#pragma once

#include "metamodel/surrogate.h"

#include <functional>
#include <vector>

namespace corvath::math::metamodel {

struct ValueTransformChoice {
  transform::TransformType type = transform::TransformType::kNone;
  std::vector<double> parameters;
};

/// The value transform that suits a quadratic regression of the support data of `model` best, for
/// models whose own fit is too costly to search with. Where the data do not determine a quadratic,
/// one without interactions or a linear one. `interruption_point` may be empty.
ValueTransformChoice FitQuadraticBoxCox(const SurrogateBase& model,
                                        const std::function<void()>& interruption_point);

}  // namespace corvath::math::metamodel
