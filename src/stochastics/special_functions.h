#pragma once

/// The special functions of the distributions, from Boost.Math in plain double precision. Outside
/// their domains they give NaN or infinity instead of raising an exception.
namespace corvath::math {

/// Complementary error function 1 - erf x, and the x at which it is p, for p in [0, 2].
double Erfc(double x);
double ErfcInverse(double p);
/// Gamma function, and the logarithm of its magnitude.
double Gamma(double x);
double LogGamma(double x);
/// ln G(1 + x) for x > -1, with all its digits next to 0.
double LogGamma1p(double x);
double Beta(double a, double b);
/// Regularised incomplete beta function I_x(a, b), 1 - I_x(a, b), and the x at which it is p.
double IncompleteBeta(double a, double b, double x);
double IncompleteBetaComplement(double a, double b, double x);
double IncompleteBetaInverse(double a, double b, double p);
/// Regularised upper incomplete gamma function Q(a, x).
double IncompleteGammaUpper(double a, double x);

}  // namespace corvath::math
