#pragma once

/// The standard normal distribution: density, distribution function and quantile.
namespace corvath::math {

/// 1 / sqrt(2 pi)
constexpr double kInverseSqrtTwoPi = 0.39894228040143265;

/// Probabilities that a quantile is asked for are held in [kProbabilityMin, 1 - kProbabilityMin],
/// so that a quantile of an unbounded distribution is always finite.
constexpr double kProbabilityMin = 1e-10;

/// `p` held in [kProbabilityMin, 1 - kProbabilityMin]; NaN stays NaN.
double ClampProbability(double p);

/// Density at z; 0 at both infinities.
double NormalPdf(double z);

/// Probability of a value up to z: erfc(-z / sqrt(2)) / 2, accurate in the lower tail.
double NormalCdf(double z);

/// The z with NormalCdf(z) = p, p clamped as above: within about 6.3613 of 0. NaN gives NaN.
double NormalQuantile(double p);

}  // namespace corvath::math
