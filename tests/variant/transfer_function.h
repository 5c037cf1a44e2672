#pragma once

#include "support/values.h"
#include "variant/signals/filter_design.h"

#include <complex>

namespace support {

/// The cascade's transfer function at angle `omega` of the unit circle.
inline Complex Transfer(const corvath::math::FilterSections& sections, double omega) {
  const Complex delay = std::polar(1.0, -omega);
  Complex product = 1;
  for (std::size_t r = 0; r < sections.numerators.size1(); ++r) {
    Complex above = 0;
    Complex below = 0;
    for (std::size_t j = sections.numerators.size2(); j-- > 0;) {
      above = above * delay + sections.numerators(r, j);
      below = below * delay + sections.denominators(r, j);
    }
    product *= above / below;
  }
  return product;
}

}  // namespace support
