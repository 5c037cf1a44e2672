#pragma once

#include "variant/value/variant.h"

namespace corvath::math {

/// Which abscissae the results of n points' n - 1 intervals stand on.
enum Direction {
  kForward = 0,   ///< the intervals' first ones
  kBackward = 1,  ///< the intervals' last ones
};

/// Calculus of real sampled functions, each channel for itself. `result` is written on success
/// alone and may be the argument.
namespace functions {

/// Difference quotients of neighbouring samples; samples of equal abscissa count as one.
/// @param direction  a Direction
void derive(Value& result, const Value& signal, int direction);
/// Running sums of trapezoids.
void integrate(Value& result, const Value& signal, int direction);
/// Sum of trapezoids: a SCALAR of XYDATA, a VECTOR with one number for each channel of a SIGNAL.
void area(Value& result, const Value& signal);
/// The same between the abscissae `a` and `b`, where the signal is linear between its samples.
void area(Value& result, const Value& signal, double a, double b);

}  // namespace functions
}  // namespace corvath::math
