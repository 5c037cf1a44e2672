#include "study/project/input_reach.h"

#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "foundation/text.h"
#include "project/records/detailed_information.h"
#include "stochastics/random_variable.h"

#include <algorithm>
#include <exception>
#include <new>

namespace corvath::study {

namespace types = algorithm::datatypes;

std::vector<Bounds> ReachOfInputs(const Project& project, std::vector<Bounds> bounds) {
  constexpr double kTail = 1e-9;
  const types::VRDB& record = project.GetRecord();
  if (record.GetSamplingType() != types::DetailedInformationBase::kStochasticSampling)
    return bounds;
  for (std::size_t i = 0; i < bounds.size(); ++i) {
    const auto* const parameter =
        record.GetParameterManager().FindParameter(utils::FromUtf8(project.GetInputs()[i]));
    if (parameter == nullptr || !parameter->HasRandom()) continue;
    try {
      const auto variable = types::ParameterToRV(*parameter);
      // In this order a NaN leaves the bound as it is.
      bounds[i].lower = std::min(bounds[i].lower, variable->InverseCDF(kTail));
      bounds[i].upper = std::max(bounds[i].upper, variable->InverseCDF(1.0 - kTail));
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {  // numbers that make no distribution
    }
  }
  return bounds;
}

}  // namespace corvath::study
