#pragma once

#include "design/designs/design_entry.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace corvath::algorithm::datatypes {

class DesignManager;
class ParameterManager;

/// Lower and upper bound by parameter name.
using InputBounds = std::map<std::wstring, std::pair<CDesignEntry, CDesignEntry>>;

/// The range of each input over the designs: the parameters with random properties for
/// `sampling_type` 2, otherwise those with deterministic properties; constant ones are no inputs.
/// A NaN counts only in the first design, where it stays. Takes a matrix of designs x inputs.
/// @throws corvath::utils::runtime_error  "Unable to extract bounds.": inputs, but no designs
/// @throws std::runtime_error             a design lacks an input
InputBounds ExtractInputBounds(const ParameterManager& parameters, const DesignManager& designs,
                               std::int32_t sampling_type);

}  // namespace corvath::algorithm::datatypes
