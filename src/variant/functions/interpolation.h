#pragma once

#include "variant/value/variant.h"

namespace corvath::math {

/// Degrees of Interpolate that have a method of their own; from 3 on the degree is that of one
/// Lagrange polynomial through all points, whose number must be degree + 1.
enum InterpolationDegree { kSpline = 0, kLinear = 1, kQuadratic = 2 };

/// A real signal at the abscissae `axis`, each channel for itself:
///
///  - degree 0: cubic spline with the end slopes `d0` and `d1`; outside, the end segments' cubics
///  - degree 1: piecewise linear; outside, the lines through the two end points
///  - degree 2: the parabola through three neighbouring points (of two points, their line)
///  - degree 3 to kMaxPolynomialDegree: Lagrange; refuses to extrapolate
///
/// Samples of equal abscissa count as one with their mean. A descending signal gives a descending
/// result, any other an ascending one, in the signal's kind; an empty axis gives UNINITIALIZED.
/// Takes O((n + m) log n) time for n samples at m abscissae, with Lagrange O(n^2 + n m).
void Interpolate(Value& result, const Value& signal, const Value::Vector& axis, int degree,
                 double d0, double d1);

/// Interpolate on an equidistant ascending axis from the first to the last abscissa; the last
/// interval may be shorter than `step`.
/// @throws CDimensionException more than kMaxEntries numbers
void InterpolateByStep(Value& result, const Value& signal, double step, int degree, double d0,
                       double d1);

}  // namespace corvath::math
