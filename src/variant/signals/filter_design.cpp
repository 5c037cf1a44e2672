#include "variant/signals/filter_design.h"

#include "foundation/constants.h"
#include "foundation/math_exception.h"
#include "foundation/text_stream.h"
#include "foundation/until_unload.h"
#include "variant/operators/elementwise.h"

#include <cmath>
#include <complex>
#include <string>
#include <vector>

namespace corvath::math {

namespace {

using Complex = Value::Complex;
using Section = AnalogPrototype::Section;
using Coefficients = std::array<double, 3>;

void CheckOrder(int order) {
  if (order < 1) throw CFilterException("Order must be positive.");
  if (order > kMaxFilterOrder)
    throw CFilterException("Order must not exceed " + std::to_string(kMaxFilterOrder) + ".");
}

/// Poles p and conj(p), no zeros, gain 1 at s = 0.
Section PolePair(const Complex& p) {
  const double c0 = std::norm(p);
  return {2, {c0, 0.0, 0.0}, {c0, -2.0 * p.real(), 1.0}};
}

/// Pole -e, no zeros, gain 1 at s = 0.
Section RealPole(double e) {
  return {1, {e, 0.0, 0.0}, {e, 1.0, 0.0}};
}

/// Angle of pole `k` (from 1) of the Butterworth circle, in the left half plane.
double CircleAngle(int k, int order) {
  return (2.0 * k + order - 1.0) * kPi / (2.0 * order);
}

/// Pole `k` (from 1) on the ellipse of the Chebyshev filters.
Complex EllipsePole(int k, int order, double v) {
  const double theta = (2.0 * k - 1.0) * kPi / (2.0 * order);
  return {-std::sin(theta) * std::sinh(v), std::cos(theta) * std::cosh(v)};
}

using Poles = std::vector<std::vector<Complex>>;
utils::UntilUnload<Poles> bessel_poles;

/// By order, from 1: the upper pole of each conjugate pair, then the real one.
Poles MakeBesselPoles() {
  return {
      {{-1.0, 0.0}},
      {{-1.103, 0.6368}},
      {{-1.0509, 1.0025}, {-1.327, 0.0}},
      {{-1.3596, 0.4071}, {-0.9877, 1.2476}},
      {{-1.3851, 0.7201}, {-0.9606, 1.4756}, {-1.5069, 0.0}},
      {{-1.5735, 0.3213}, {-1.3836, 0.9727}, {-0.9318, 1.664}},
      {{-1.613, 0.5896}, {-1.3797, 1.1923}, {-0.9104, 1.8375}, {-1.6853, 0.0}},
      {{-1.7627, 0.2737}, {-0.8955, 2.0044}, {-1.378, 1.3926}, {-1.6419, 0.8253}},
      {{-1.8081, 0.5126}, {-1.6532, 1.0319}, {-1.3683, 1.5685}, {-0.8788, 2.1509}, {-1.8575, 0.0}},
      {{-1.9335, 0.2424},
       {-0.8684, 2.2996},
       {-1.8478, 0.7295},
       {-1.6669, 1.2248},
       {-1.3649, 1.7388}},
  };
}

const std::vector<Complex>& BesselPoles(int order) {
  return bessel_poles.Get(MakeBesselPoles)[static_cast<std::size_t>(order - 1)];
}

double Tangent(double angle) {
  Value result;
  functions::tan(result, Value(angle));  // refuses angles at pi/2
  return result.GetScalar().real();
}

/// `text` with the Nyquist limit in the place of its "%f".
std::string WithLimit(const char* text, double limit) {
  utils::TextStream number;
  number << std::fixed << limit;  // six decimals
  std::string message = text;
  return message.replace(message.find("%f"), 2, number.str());
}

bool IsInside(double frequency, double nyquist) {
  return frequency > 0.0 && frequency < nyquist;
}

void CheckScalarCutoff(double cutoff, double nyquist) {
  if (!IsInside(cutoff, nyquist))
    throw CDomainException(
        WithLimit("Cutoff frequency cf out of range. Must fulfill 0.0 < cf < '%f' .", nyquist));
}

/// One polynomial of a section in z^-1, from its form in s = (1 - z^-1) / (t (1 + z^-1)), with the
/// powers of t and 1 + z^-1 multiplied out.
std::array<double, 5> LowPass(const Coefficients& q, int order, double t) {
  if (order == 1) return {q[1] + q[0] * t, q[0] * t - q[1], 0.0};
  const double square = q[0] * t * t;
  return {q[2] + q[1] * t + square, 2.0 * square - 2.0 * q[2], q[2] - q[1] * t + square};
}

/// The same from (s^2 + p) / (w s), with p the product and w the difference of the edges' tangents.
std::array<double, 5> BandPass(const Coefficients& q, int order, double p, double w) {
  const double v = 2.0 * p - 2.0;
  if (order == 1) return {q[1] * (1.0 + p) + q[0] * w, q[1] * v, q[1] * (1.0 + p) - q[0] * w};
  const double x = (1.0 + p) * (1.0 + p);
  const double y = 4.0 * p * p - 4.0;
  const double z = 6.0 - 4.0 * p + 6.0 * p * p;
  const double middle = q[1] * w;
  const double square = q[0] * w * w;
  return {q[2] * x + middle * (1.0 + p) + square, q[2] * y + middle * v, q[2] * z - 2.0 * square,
          q[2] * y - middle * v, q[2] * x - middle * (1.0 + p) + square};
}

/// The polynomial of 1/s, times s^order.
Coefficients Reciprocal(const Coefficients& q, int order) {
  return order == 1 ? Coefficients{q[1], q[0], 0.0} : Coefficients{q[2], q[1], q[0]};
}

}  // namespace

AnalogPrototype ButterworthPrototype(int order) {
  CheckOrder(order);
  AnalogPrototype prototype;
  for (int k = 1; k <= order / 2; ++k)
    prototype.sections.push_back(
        {2, {1.0, 0.0, 0.0}, {1.0, -2.0 * std::cos(CircleAngle(k, order)), 1.0}});
  if (order % 2 == 1) prototype.sections.push_back(RealPole(1.0));
  return prototype;
}

AnalogPrototype BesselPrototype(int order) {
  if (order < 1 || order > 10) throw CFilterException("Order must be within [1,10].");
  AnalogPrototype prototype;
  for (const Complex& pole : BesselPoles(order))
    prototype.sections.push_back(pole.imag() != 0.0 ? PolePair(pole) : RealPole(-pole.real()));
  return prototype;
}

AnalogPrototype ChebyshevOnePrototype(int order, double ripple) {
  CheckOrder(order);
  if (!(ripple > 0.0)) throw CFilterException("Ripple must be positive.");  // NaN too
  const double v = std::asinh(1.0 / ripple) / order;
  AnalogPrototype prototype;
  for (int k = 1; k <= order / 2; ++k)
    prototype.sections.push_back(PolePair(EllipsePole(k, order, v)));
  if (order % 2 == 1)
    prototype.sections.push_back(RealPole(-EllipsePole(order / 2 + 1, order, v).real()));
  else
    prototype.gain = 1.0 / std::sqrt(1.0 + ripple * ripple);
  return prototype;
}

AnalogPrototype ChebyshevTwoPrototype(int order, double ripple) {
  CheckOrder(order);
  if (!(ripple > 0.0) || ripple == 1.0)
    throw CFilterException("Ripple must be positive and not equal to 1.0.");
  // No filter has a stop band above its pass band; the design's square root would be imaginary.
  if (ripple > 1.0) throw CFilterException("Ripple must be less than 1.0.");
  const double v = std::asinh(std::sqrt(1.0 - ripple * ripple) / ripple) / order;
  AnalogPrototype prototype;
  for (int k = 1; k <= order / 2; ++k) {
    Section section = PolePair(1.0 / EllipsePole(k, order, v));
    const double zero = 1.0 / std::cos((2.0 * k - 1.0) * kPi / (2.0 * order));
    section.numerator = {zero * zero, 0.0, 1.0};
    prototype.gain *= section.denominator[0] / section.numerator[0];
    prototype.sections.push_back(section);
  }
  if (order % 2 == 1) {
    Section section = RealPole(-1.0 / EllipsePole(order / 2 + 1, order, v).real());
    section.numerator = {1.0, 0.0, 0.0};
    prototype.gain *= section.denominator[0];
    prototype.sections.push_back(section);
  }
  return prototype;
}

AnalogPrototype SineButterworthPrototype(int order) {
  CheckOrder(order);
  AnalogPrototype prototype;
  for (int k = 1; k <= order / 2; ++k) {
    Value pole;
    functions::asin(pole, Value(std::sin(0.5) * std::polar(1.0, CircleAngle(k, order))));
    prototype.sections.push_back(PolePair(2.0 * pole.GetScalar()));
  }
  if (order % 2 == 1) prototype.sections.push_back(RealPole(kPi / 2.0));
  return prototype;
}

void CheckCutoff(const Value& cutoff, int type, double step) {
  const double nyquist = 0.5 / step;
  if (cutoff.IsComplex()) throw CTypeException("Cutoff frequency must be real.");
  if (cutoff.IsVector()) {
    const Value::Vector& edges = cutoff.GetVector();
    if (type < kBandPass) throw CDomainException("Cutoff must be type of scalar.");
    if (edges.size() != 2 || !(edges(1).real() > edges(0).real()))
      throw CFilterException("Vector with lower and upper cutoff expected.");
    if (!IsInside(edges(0).real(), nyquist) || !IsInside(edges(1).real(), nyquist))
      throw CDomainException(
          WithLimit("Cutoff frequencies cf out of range. Must fulfill 0.0 < cf < '%f' .", nyquist));
  } else if (cutoff.IsScalar()) {
    if (type == kBandPass || type == kBandStop)
      throw CDomainException("Cutoff must be type of vector.");
    CheckScalarCutoff(cutoff.GetScalar().real(), nyquist);
  } else {
    throw CFilterException(
        "Cutoff has to be SCALAR (in case LOWPASS or HIGHPASS) or VECTOR of size 2 (in case "
        "BANDPASS or BANDSTOP).");
  }
  if (type < kLowPass || type > kBandStop)
    throw CTypeException("Wrong type: LOWPASS, HIGHPASS, BANDPASS or BANDSTOP expected.");
}

FilterSections Digitize(const AnalogPrototype& prototype, const Value& cutoff, int type,
                        double step) {
  CheckCutoff(cutoff, type, step);
  const bool band = type == kBandPass || type == kBandStop;
  const bool reciprocal = type == kHighPass || type == kBandStop;
  double t = 0.0;
  double p = 0.0;
  double w = 0.0;
  if (band) {
    const double lower = Tangent(kPi * cutoff.GetVector()(0).real() * step);
    const double upper = Tangent(kPi * cutoff.GetVector()(1).real() * step);
    p = lower * upper;
    w = upper - lower;
  } else {
    t = Tangent(kPi * cutoff.GetScalar().real() * step);
  }
  const auto row_of = [&](Coefficients q, int order) {
    if (reciprocal) q = Reciprocal(q, order);
    return band ? BandPass(q, order, p, w) : LowPass(q, order, t);
  };

  const std::size_t columns = band ? 5 : 3;
  const std::size_t rows = prototype.sections.size();
  FilterSections sections{Value::Matrix(rows, columns), Value::Matrix(rows, columns)};
  for (std::size_t r = 0; r < rows; ++r) {
    const Section& section = prototype.sections[r];
    const auto numerator = row_of(section.numerator, section.order);
    const auto denominator = row_of(section.denominator, section.order);
    const double gain = r == 0 ? prototype.gain : 1.0;
    for (std::size_t j = 0; j < columns; ++j) {
      sections.numerators(r, j) = numerator[j] * gain;
      sections.denominators(r, j) = denominator[j];
    }
  }
  return sections;
}

FilterSections SaeSections(const Value& cutoff, double step) {
  if (cutoff.IsComplex()) throw CTypeException("Cutoff frequency must be real.");
  if (!cutoff.IsScalar()) throw CDomainException("Cutoff must be type of scalar.");
  CheckScalarCutoff(cutoff.GetScalar().real(), 0.5 / step);
  const double t = Tangent(cutoff.GetScalar().real() * (5.0 * kPi / 4.0) * step);
  const Coefficients denominator{1.0, std::sqrt(2.0), 1.0};
  FilterSections sections{Value::Matrix(1, 3), Value::Matrix(1, 3)};
  const auto b = LowPass({1.0, 0.0, 0.0}, 2, t);
  const auto a = LowPass(denominator, 2, t);
  for (std::size_t j = 0; j < 3; ++j) {
    sections.numerators(0, j) = b[j];
    sections.denominators(0, j) = a[j];
  }
  return sections;
}

}  // namespace corvath::math
