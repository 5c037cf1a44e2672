#pragma once

#include "space_filling_sample.h"
#include "ten_bar_truss.h"

#include <Eigen/Core>

#include <cstdint>
#include <string>

namespace examples {

/// The study of the sample project: all areas between these bounds, in^2.
constexpr double kSmallestArea = 5.0;
constexpr double kLargestArea = 25.0;

/// "area_1" for the first bar.
inline std::wstring AreaName(int bar) {
  return L"area_" + std::to_wstring(bar + 1);
}

/// A space-filling sample of `n` designs: n x 10 areas.
inline Eigen::MatrixXd SampleAreas(Eigen::Index n, std::uint32_t seed) {
  const Eigen::MatrixXd unit = SpaceFillingSample(n, kNumBars, seed);
  return kSmallestArea + (kLargestArea - kSmallestArea) * unit.array();
}

}  // namespace examples
