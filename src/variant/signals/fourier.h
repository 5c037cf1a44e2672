#pragma once

#include "variant/value/variant.h"

/// Discrete spectra of signals and matrices. `result` is written on success alone and may be an
/// argument. Times are O(n log n) for any number n of samples.
namespace corvath::math::functions {

/// Spectrum of each channel at the angular frequencies w[k] = 2 pi k / (t1 - t0), k < n, with t0 and
/// t1 the first and the last abscissa:
///
///     X[k] = exp(i w[k] t0) sum_j x[j] exp(-2 pi i j k / n)
///
/// In the kind of the signal, always ascending.
/// @throws CTypeException       no signal, or not equidistant
/// @throws CDimensionException  less than 2 samples
void fft(Value& result, const Value& signal);
/// A signal that is not equidistant is resampled first, to its smallest step by Interpolate.
void fft(Value& result, const Value& signal, int interpolation, double d0, double d1);

/// Inverse of fft for signals that start at 0: on the axis u[k] = 2 pi k / w1, with w0 and w1 the
/// first and the last abscissa,
///
///     x[k] = exp(-i w0 u[k]) / n sum_j X[j] exp(+2 pi i j k / n)
///
/// Throws like fft.
void ifft(Value& result, const Value& signal);
void ifft(Value& result, const Value& signal, int interpolation, double d0, double d1);

/// Rotates the n samples of an axis that starts at 0 so that 0 comes into the middle, behind
/// floor(n/2) negative abscissae (ifftshift: floor((n + 1)/2)). A signal that is not equidistant is
/// resampled linearly first. Kind and direction stay.
/// @throws CDomainException  the least abscissa is not exactly 0
void fftshift(Value& result, const Value& signal);
void ifftshift(Value& result, const Value& signal);

/// Spectrum of a MATRIX over both indices, unscaled; ifft2d is its inverse.
void fft2d(Value& result, const Value& matrix);
void ifft2d(Value& result, const Value& matrix);

}  // namespace corvath::math::functions
