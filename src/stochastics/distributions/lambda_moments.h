#pragma once

namespace corvath::algorithm {

/// Moments of (p^a - 1) / a - ((1 - p)^b - 1) / b for p uniform on (0, 1): what the two shapes of a
/// generalised lambda distribution decide.
struct LambdaMoments {
  double mean;
  double sd;
  double skewness;
  double kurtosis;  ///< excess
};

/// @param a, b  above -1/4, not 0
LambdaMoments MomentsOfLambda(double a, double b);

}  // namespace corvath::algorithm
