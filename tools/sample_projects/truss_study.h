#pragma once

#include <string>

namespace sample_projects {

/// The study of the sample project: all areas between these bounds, in^2.
constexpr double kSmallestArea = 5.0;
constexpr double kLargestArea = 25.0;

/// "area_1" for the first bar.
inline std::wstring AreaName(int bar) {
  return L"area_" + std::to_wstring(bar + 1);
}

}  // namespace sample_projects
