#pragma once

#include "variant/value/variant.h"

#include <cstdint>

/// Means of powers of real signals over their abscissa: a SCALAR of XYDATA, a VECTOR with one
/// number for each channel of a SIGNAL. `result` is written on success alone and may be an
/// argument.
namespace corvath::math::functions {

/// (I / D)^(1/q) with the trapezoidal integral I of y^q, each end sample counting for a whole step,
/// over the span D, extended by half a step at each end: on an equidistant axis the mean of y^q.
void powmean(Value& result, const Value& signal, std::uint64_t q);
void rms(Value& result, const Value& signal);  ///< q = 2
/// Of the difference of two signals on one timeline.
void rmsdev(Value& result, const Value& signal1, const Value& signal2);
void powmeandev(Value& result, const Value& signal1, const Value& signal2, std::uint64_t q);

}  // namespace corvath::math::functions
