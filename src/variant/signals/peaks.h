#pragma once

#include "variant/value/variant.h"

#include <cstdint>

namespace corvath::math {

/// Which turning points findpeaks takes.
enum PeakMode : std::int32_t {
  kMinPeaks = -1,
  kPeaks = 0,  ///< both
  kMaxPeaks = 1,
  kMagPeaks = 2  ///< maxima of the absolute value
};

namespace functions {

/// Turning points of the real parts of a VECTOR or of a signal of one channel, as XYDATA in the
/// order found; abscissae of a VECTOR are indices. UNINITIALIZED if there are none. The first and
/// the last sample are never peaks, a plateau is one at its end.
/// @param mode  a PeakMode
/// @param mind  a peak lies more than so many samples behind the one before
/// @param minh  the height is above this; of kMagPeaks the absolute value
/// @param th    least difference in height to the peak before, or to the first sample
/// @param num   most peaks to take
/// @throws CTypeException  wrong kind, more than one row, no data
void findpeaks(Value& result, const Value& x, std::int32_t mode, std::int32_t mind, double minh,
               double th, std::uint64_t num);

}  // namespace functions
}  // namespace corvath::math
