#pragma once

#include <cstddef>

namespace literature {

/// Output `k` (mass, flat, stress[0], stress[1], stress[2]) of the plate project.
inline double PlateOutput(std::size_t k, double x, double y, double z) {
  const double outputs[] = {1.0 + 2.0 * x - 3.0 * y + 0.5 * z, 2.0 - x, x * x + y, x * y - z,
                            0.1 * z * z - x * z};
  return outputs[k];
}

}  // namespace literature
