#pragma once

/// Gamma and beta distributions with large shapes, which are nearly normal. Their continued
/// fractions need as many steps as the root of the shape, and lose as many digits as it has; the
/// saddlepoint approximation of the tail
///
///     F = Phi(w) + phi(w) (1 / w - 1 / v)
///
/// has an error of about shape^-3/2 / 500 (v: distance from the mean in standard deviations, w^2 / 2:
/// fall of the logarithm of the density).
///
/// R. Lugannani, S. Rice, "Saddle point approximation for the distribution of the sum of independent
/// random variables", Advances in Applied Probability 12 (1980), pp. 475-490. For the two
/// distributions also N. M. Temme, "Special Functions", Wiley 1996, sections 11.2.4 and 11.3.3.
namespace corvath::math {

/// From here on (for the smaller shape of a beta distribution) the error is below 1e-12.
constexpr double kLargeShape = 3e6;

/// Of the gamma distribution with scale 1: probability above x, and density at x. a >= kLargeShape.
double GammaUpperOfLargeShape(double a, double x);
double GammaDensityOfLargeShape(double a, double x);

/// Of the beta distribution on [0, 1]: probability up to x, density at x, and the x that is
/// exceeded with the probability 1 - p, 0 < p < 1. a, b >= kLargeShape.
double BetaLowerOfLargeShapes(double a, double b, double x);
double BetaDensityOfLargeShapes(double a, double b, double x);
double BetaQuantileOfLargeShapes(double a, double b, double p);

}  // namespace corvath::math
