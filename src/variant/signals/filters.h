#pragma once

#include "variant/value/variant.h"

/// Filters of real signals, each channel for itself. `result` is written on success alone and may be
/// an argument.
///
/// The recursive ones run forward in time with the start condition `start1` and, if `backward`, over
/// the outcome backward in time with `start2`: no phase is left, the gain counts twice. A descending
/// signal gives a descending result. A signal that is not equidistant is resampled first, to its
/// smallest step by Interpolate with `interpolation`, `d0` and `d1`; the result stays on the new
/// axis.
///
/// @param cf      cut-off in cycles per unit of the timeline: a real SCALAR for low and high pass, a
///                real VECTOR of two edges for band pass and band stop, below half the sampling rate
/// @param type    a FilterType
/// @param start1  a StartCondition
/// @throws CTypeException       kinds do not fit, complex numbers, unknown type
/// @throws CDimensionException  less than 2 samples
/// @throws CDomainException     a cut-off out of range
/// @throws CFilterException     order, ripple, start condition, factor, ratio, number of points
namespace corvath::math::functions {

/// Maximally flat in the pass band; one pass has the gain 1/sqrt(2) at `cf`.
void butterworthFilter(Value& result, const Value& signal, const Value& cf, int order, int type,
                       int interpolation, double d0, double d1, int start1, int start2,
                       bool backward);
/// Poles at 2 asin(sin(1/2) p) of the Butterworth poles p.
void sineButterworthFilter(Value& result, const Value& signal, const Value& cf, int order, int type,
                           int interpolation, double d0, double d1, int start1, int start2,
                           bool backward);
/// @param order  1 to 10
void besselFilter(Value& result, const Value& signal, const Value& cf, int order, int type,
                  int interpolation, double d0, double d1, int start1, int start2, bool backward);
/// @param ripple  positive; the gain in the pass band is at least 1/sqrt(1 + ripple^2)
void chebyOneFilter(Value& result, const Value& signal, const Value& cf, double ripple, int order,
                    int type, int interpolation, double d0, double d1, int start1, int start2,
                    bool backward);
/// @param ripple  in (0, 1): the highest gain in the stop band, which starts at `cf`
void chebyTwoFilter(Value& result, const Value& signal, const Value& cf, double ripple, int order,
                    int type, int interpolation, double d0, double d1, int start1, int start2,
                    bool backward);
/// The channel filter of SAE J211 for the channel frequency class `cf`, a real SCALAR.
void saeFilter(Value& result, const Value& signal, const Value& cf, int interpolation, double d0,
               double d1, int start1, int start2, bool backward);

/// Every `factor`-th sample of the first channel behind a Butterworth low pass of order 2 without
/// phase, whose cut-off is the new sampling rate divided by `ratio`. floor(n / factor) samples.
/// @param factor, ratio  at least 2
void decimateFilter(Value& result, const Value& signal, int factor, int ratio, int interpolation,
                    double d0, double d1);
/// Moving average over `points` samples to either side and the sample itself; at the ends over those
/// that are there. Samples of equal abscissa count as one. Takes O(n) time.
/// @param points  1 to half the number of samples
void smoothFilter(Value& result, const Value& signal, int points);

}  // namespace corvath::math::functions
