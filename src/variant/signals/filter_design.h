#pragma once

#include "variant/value/variant.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace corvath::math {

enum FilterType : std::int32_t { kLowPass = 0, kHighPass = 1, kBandPass = 2, kBandStop = 3 };

/// A sampled filter as a cascade: row r of both matrices is section r, column j the coefficient of
/// z^-j. Low and high pass have 3 columns, band pass and band stop 5.
struct FilterSections {
  Value::Matrix numerators;
  Value::Matrix denominators;
};

/// Highest order of a design; far above all that the arithmetic can follow.
constexpr int kMaxFilterOrder = 4096;

/// An analog low pass of cut-off 1 rad/s. Each order n has floor(n/2) sections of second order and,
/// if it is odd, one of first order behind them.
struct AnalogPrototype {
  /// Numerator and denominator, coefficients of s^0, s^1, s^2.
  struct Section {
    int order;
    std::array<double, 3> numerator;
    std::array<double, 3> denominator;
  };
  std::vector<Section> sections;
  double gain = 1.0;  ///< the filter is the product of the sections times this
};

/// Orders run from 1 to kMaxFilterOrder, of the Bessel filter to 10.
/// @throws CFilterException the order or the ripple is outside its range
AnalogPrototype ButterworthPrototype(int order);
/// Poles from the usual table of Bessel filters, scaled to 3 dB at the cut-off within 1 %.
AnalogPrototype BesselPrototype(int order);
/// Chebyshev of the first kind: the squared gain in the pass band stays within
/// [1/(1 + ripple^2), 1].
AnalogPrototype ChebyshevOnePrototype(int order, double ripple);
/// Chebyshev of the second kind: in the stop band, which starts at the cut-off, the gain is at most
/// `ripple`, in (0, 1).
AnalogPrototype ChebyshevTwoPrototype(int order, double ripple);
/// Poles at 2 asin(sin(1/2) p) of the Butterworth poles p.
AnalogPrototype SineButterworthPrototype(int order);

/// The prototype moved to the edges `cutoff` by s -> 1/s (high pass, band stop), s -> (s^2 + p)/(w s)
/// (band pass, band stop) and sampled with the bilinear transform, edges prewarped.
/// @param cutoff  in cycles per unit of time: a real SCALAR for low and high pass, a real VECTOR of
///                lower and upper edge for band pass and band stop, between 0 and 1/(2 step)
/// @param type    a FilterType
/// @param step    time between two samples
/// @throws CTypeException, CFilterException, CDomainException  cut-off or type do not fit
FilterSections Digitize(const AnalogPrototype& prototype, const Value& cutoff, int type,
                        double step);

/// The checks of Digitize.
void CheckCutoff(const Value& cutoff, int type, double step);

/// The channel filter of SAE J211: one second-order Butterworth low pass, whose cut-off is 5/4 of
/// the channel's frequency `cutoff`.
FilterSections SaeSections(const Value& cutoff, double step);

}  // namespace corvath::math
