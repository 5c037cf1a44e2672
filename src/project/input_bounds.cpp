#include "project/input_bounds.h"

#include "design/designs/design_manager.h"
#include "design/designs/input_columns.h"
#include "design/parameters/parameter_manager.h"
#include "foundation/exception.h"
#include "project/records/detailed_information.h"

#include <vector>

namespace corvath::algorithm::datatypes {

InputBounds ExtractInputBounds(const ParameterManager& parameters, const DesignManager& designs,
                               std::int32_t sampling_type) {
  const bool random = sampling_type == DetailedInformationBase::kStochasticSampling;
  std::vector<std::wstring> names;
  for (const Parameter& parameter : parameters.GetAllParameters())
    if (!parameter.IsConst() && (random ? parameter.HasRandom() : parameter.IsOptimization()))
      names.push_back(parameter.GetName());
  if (names.empty()) return {};
  // Without data there are no bounds; a check against none would let everything pass.
  if (designs.empty()) throw utils::runtime_error(L"Unable to extract bounds.");

  const Eigen::MatrixXd data =
      InputColumns::Of(parameters, names, random ? InputSide::kRandom : InputSide::kDeterministic)
          .ToMatrix(designs.GetDesigns());
  InputBounds bounds;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const auto column = data.col(static_cast<Eigen::Index>(i));
    double lower = column(0);
    double upper = column(0);
    for (const double value : column) {
      if (value < lower) lower = value;
      if (value > upper) upper = value;
    }
    bounds.emplace(names[i], std::pair(CDesignEntry(lower), CDesignEntry(upper)));
  }
  return bounds;
}

}  // namespace corvath::algorithm::datatypes
