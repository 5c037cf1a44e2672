#pragma once

#include <string>
#include <string_view>

namespace corvath::study {

/// The unit that a cell tells, without brackets: "mm", "[N/mm^2]", "(kg*m/s²)", "%"; "-" for a
/// quantity without one. Empty for any other text.
std::string UnitOf(std::string_view cell);

}  // namespace corvath::study
