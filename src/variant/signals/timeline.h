#pragma once

#include "variant/value/variant.h"

/// What concerns the abscissae of signals (SIGNAL or XYDATA) alone.
namespace corvath::math {

/// The signal with timeline and data columns reversed.
Value Flip(const Value& signal);
/// Flip(signal) if its timeline descends, else a copy.
Value Ascending(const Value& signal);
/// Whether neighbouring samples have equal abscissae.
bool HasDuplicates(const Value& signal);
/// Neighbouring samples of equal abscissa become one with the mean 0.5 (y1 + y2) of each channel.
Value MergeDuplicates(const Value& signal);

/// Equal lengths, and all differences zero by IsZero.
bool SameTimeline(const Value& signal1, const Value& signal2);

/// Brings two ascending signals onto the ordered union of their timelines by Interpolate with
/// `degree`, `d0` and `d1`. Abscissae that both have are taken once; a timeline is not thinned.
/// Both are written on success alone.
void EqualizeTimelines(Value& signal1, Value& signal2, int degree, double d0, double d1);

/// Whether all steps agree, by IsZero of the difference of two consecutive ones.
bool IsEquidistant(const Value& signal);
/// The largest step not above the smallest one of the timeline that divides the span into whole
/// parts; of a descending timeline it is negative.
double SmallestStep(const Value& signal);

namespace functions {

/// The abscissae of both signals inside the range that they share, ascending, as a VECTOR.
void lct(Value& result, const Value& signal1, const Value& signal2);
/// The channels of both on one timeline; a channel that repeats an earlier one is dropped.
void mapping(Value& result, const Value& signal1, const Value& signal2, int degree, double d0,
             double d1);
/// The samples in [start, end], in the signal's direction; UNINITIALIZED if there are none.
void window(Value& result, const Value& signal, double start, double end);

}  // namespace functions
}  // namespace corvath::math
