#pragma once

#include "doe/sobol_table.h"

namespace sobol {

using corvath::math::DirectionNumbers;

/// Quality t of the first 2^m points of two dimensions: each interval of 2^t / 2^m of the unit
/// square, whose sides are halves of halves, has exactly 2^t of them. 0 is best, m - 1 worst.
/// H. Niederreiter, "Point sets and sequences with small discrepancy", Monatshefte fuer Mathematik
/// 104, 1987, pp. 273-337.
int PairQuality(const DirectionNumbers& a, const DirectionNumbers& b, int m);

/// What the initial numbers were searched for: the sum of 4^t over m from 2 to 16, so that a bad
/// pair weighs more than several fair ones.
double PairCost(const DirectionNumbers& a, const DirectionNumbers& b);

}  // namespace sobol
