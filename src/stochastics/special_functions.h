#pragma once

/// The special functions of the distributions, from Boost.Math in plain double precision. Outside
/// their domains they give NaN or infinity instead of raising an exception.
namespace corvath::math {

/// Complementary error function 1 - erf x, and the x at which it is p, for p in [0, 2].
double Erfc(double x);
double ErfcInverse(double p);
/// Logarithm of the magnitude of the gamma function.
double LogGamma(double x);
/// ln G(1 + x) for x > -1, with all its digits next to 0.
double LogGamma1p(double x);
/// Regularised incomplete beta function I_x(a, b), 1 - I_x(a, b), and the x at which it is p.
double IncompleteBeta(double a, double b, double x);
double IncompleteBetaComplement(double a, double b, double x);
double IncompleteBetaInverse(double a, double b, double p);
/// x^(a - 1) (1 - x)^(b - 1) / B(a, b)
double BetaDensity(double a, double b, double x);
/// Regularised upper incomplete gamma function Q(a, x).
double IncompleteGammaUpper(double a, double x);
/// x^(a - 1) e^-x / G(a)
double GammaDensity(double a, double x);

}  // namespace corvath::math
