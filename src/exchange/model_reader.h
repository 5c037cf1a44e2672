#pragma once

#include "exchange/project_description.h"

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <vector>

namespace corvath::math::metamodel {
class SurrogateBase;
}

namespace corvath::exchange {

/// A model or criterion that has no description; what() says why.
class NotDescribable : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// @param columns  of each column of the model the position of the input
/// @throws NotDescribable  it is not built, its parts contradict each other, a number is not finite
ResponseModel ReadModel(const math::metamodel::SurrogateBase& surrogate,
                        const std::vector<std::size_t>& columns);

/// Steps of the library's gradients, by position of the input; empty without support points.
std::vector<double> ReadGradientSteps(const math::metamodel::SurrogateBase& surrogate,
                                      const std::vector<std::size_t>& columns);

/// Nothing for a model without residuals.
/// @param model  what ReadModel gave
std::optional<LocalError> ReadLocalError(const math::metamodel::SurrogateBase& surrogate,
                                         const ResponseModel& model);

}  // namespace corvath::exchange
