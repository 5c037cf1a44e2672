#include "variant/signals/filters.h"

#include "foundation/constants.h"
#include "support/values.h"
#include "variant/signals/filter_cascade.h"
#include "variant/signals/filter_design.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

/// The cascade's transfer function at angle `omega` of the unit circle.
Complex Transfer(const FilterSections& sections, double omega) {
  const Complex delay = std::polar(1.0, -omega);
  Complex product = 1;
  for (std::size_t r = 0; r < sections.numerators.size1(); ++r) {
    Complex above = 0;
    Complex below = 0;
    for (std::size_t j = sections.numerators.size2(); j-- > 0;) {
      above = above * delay + sections.numerators(r, j);
      below = below * delay + sections.denominators(r, j);
    }
    product *= above / below;
  }
  return product;
}

/// Chebyshev's polynomial of the first kind at |x|.
double Chebyshev(int n, double x) {
  x = std::abs(x);
  return x <= 1 ? std::cos(n * std::acos(x)) : std::cosh(n * std::acosh(x));
}

struct Family {
  const char* name;
  int max_order;
  AnalogPrototype (*make)(int order);
  double (*squared_gain)(int order, double w);  ///< of the analog low pass at w rad/s
};

constexpr double kRipple1 = 0.5;
constexpr double kRipple2 = 0.1;

/// |H(i w)|^2 of pole pairs p, conj(p) with gain 1 at 0, from the poles alone.
double AllPole(const std::vector<Complex>& poles, double w) {
  double squared = 1;
  for (const Complex& p : poles) squared *= std::norm(p) / std::norm(Complex(0, w) - p);
  return squared;
}

const Family kFamilies[] = {
    {"Butterworth", 9, ButterworthPrototype,
     [](int n, double w) { return 1 / (1 + std::pow(w, 2 * n)); }},
    {"Chebyshev 1", 9, [](int n) { return ChebyshevOnePrototype(n, kRipple1); },
     [](int n, double w) { return 1 / (1 + std::pow(kRipple1 * Chebyshev(n, w), 2)); }},
    {"Chebyshev 2", 9, [](int n) { return ChebyshevTwoPrototype(n, kRipple2); },
     [](int n, double w) {
       const double t = std::pow(Chebyshev(n, 1 / w), 2);
       return 1 / (1 + (1 / (kRipple2 * kRipple2) - 1) / t);
     }},
    {"Sine-Butterworth", 7, SineButterworthPrototype,
     [](int n, double w) {
       // Poles of the whole left half circle, conjugates by their own angles; the arcsine of a
       // complex number is -i log(i z + sqrt(1 - z^2)).
       std::vector<Complex> poles;
       for (int k = 1; k <= n; ++k) {
         const Complex z = std::sin(0.5) * std::polar(1.0, (2.0 * k + n - 1) * kPi / (2.0 * n));
         const Complex i(0, 1);
         poles.push_back(2 * k == n + 1 ? Complex(-kPi / 2)
                                        : -2.0 * i * std::log(i * z + std::sqrt(1.0 - z * z)));
       }
       return AllPole(poles, w);
     }},
};

/// The analog low pass frequency that stands at angle `omega` of a filter with edges at angles.
double Prewarped(int type, double omega, double lower, double upper) {
  const double t = std::tan(omega / 2);
  const double t0 = std::tan(lower / 2);
  const double t1 = std::tan(upper / 2);
  switch (type) {
    case kLowPass:
      return t / t0;
    case kHighPass:
      return t0 / t;
    case kBandPass:
      return std::abs((t * t - t0 * t1) / (t * (t1 - t0)));
    default:
      return std::abs(t * (t1 - t0) / (t * t - t0 * t1));
  }
}

TEST(FilterDesign, TransferFunctionsAreTheClosedForms) {
  constexpr double kStep = 0.01;  // 100 samples per unit of time
  constexpr double kLower = 8.0;
  constexpr double kUpper = 17.0;
  const auto angle = [](double f) { return 2 * kPi * f * kStep; };
  for (const Family& family : kFamilies)
    for (int order = 1; order <= family.max_order; ++order)
      for (int type = kLowPass; type <= kBandStop; ++type) {
        const Value cutoff = type < kBandPass ? Scalar(kLower) : Vec({kLower, kUpper});
        const FilterSections sections = Digitize(family.make(order), cutoff, type, kStep);
        ASSERT_EQ(sections.numerators.size1(), static_cast<std::size_t>(order + 1) / 2);
        ASSERT_EQ(sections.numerators.size2(), type < kBandPass ? 3u : 5u);
        // Pass and stop bands, the edges and beside them.
        for (const double f : {0.5, 3.0, 7.9, kLower, 8.3, 11.0, 16.0, kUpper, 17.5, 30.0, 47.0}) {
          const double w = Prewarped(type, angle(f), angle(kLower), angle(kUpper));
          const double gain = std::abs(Transfer(sections, angle(f)));
          EXPECT_NEAR(gain * gain, family.squared_gain(order, w), 1e-10)
              << family.name << " order " << order << " type " << type << " at " << f;
        }
      }
}

TEST(FilterDesign, BesselIsThreeDecibelsDownAtTheEdges) {
  // The table's scale meets 3 dB to a few thousandths.
  for (int order = 1; order <= 10; ++order) {
    for (const int type : {kLowPass, kHighPass}) {
      const FilterSections sections = Digitize(BesselPrototype(order), Scalar(5), type, 0.02);
      EXPECT_NEAR(std::abs(Transfer(sections, 2 * kPi * 0.1)), std::sqrt(0.5), 5e-3) << order;
      EXPECT_NEAR(std::abs(Transfer(sections, type == kLowPass ? 0 : kPi)), 1, 1e-9) << order;
      EXPECT_NEAR(std::abs(Transfer(sections, type == kLowPass ? kPi : 0)), 0, 1e-9) << order;
    }
    for (const int type : {kBandPass, kBandStop}) {
      const FilterSections sections = Digitize(BesselPrototype(order), Vec({5, 9}), type, 0.02);
      for (const double edge : {0.1, 0.18})
        EXPECT_NEAR(std::abs(Transfer(sections, 2 * kPi * edge)), std::sqrt(0.5), 5e-3) << order;
      EXPECT_NEAR(std::abs(Transfer(sections, 0)), type == kBandPass ? 0 : 1, 1e-9) << order;
    }
    // Group delay of the analog low pass is nearly constant up to half the cut-off from order 3 on.
    if (order < 3) continue;
    const FilterSections slow = Digitize(BesselPrototype(order), Scalar(1), kLowPass, 1e-4);
    const auto delay = [&](double f) {
      const double omega = 2 * kPi * f * 1e-4;
      return -std::arg(Transfer(slow, omega * 1.001) / Transfer(slow, omega * 0.999)) /
             (0.002 * omega);
    };
    EXPECT_NEAR(delay(0.5) / delay(0.05), 1, order == 3 ? 0.02 : 0.005) << order;
  }
}

TEST(FilterDesign, BesselPolesAreTheRootsOfTheReverseBesselPolynomials) {
  // theta_n(s) = sum (2n-k)! / (2^(n-k) k! (n-k)!) s^k, up to the scale of the table, which has four
  // decimals.
  for (int n = 1; n <= 10; ++n) {
    std::vector<double> theta(static_cast<std::size_t>(n) + 1);
    for (int k = 0; k <= n; ++k)
      theta[static_cast<std::size_t>(k)] =
          std::exp(std::lgamma(2 * n - k + 1) - std::lgamma(k + 1) - std::lgamma(n - k + 1)) /
          std::pow(2.0, n - k);
    const auto value = [&](const Complex& s, bool derivative) {
      Complex sum = 0;
      for (std::size_t k = theta.size(); k-- > (derivative ? 1 : 0);)
        sum = sum * s + theta[k] * (derivative ? static_cast<double>(k) : 1.0);
      return sum;
    };
    std::vector<Complex> poles;  // one of each conjugate pair
    double product = 1;          // of all their magnitudes
    for (const auto& section : BesselPrototype(n).sections) {
      const auto& d = section.denominator;
      const Complex root = std::sqrt(Complex(d[1] * d[1] - 4 * d[0] * d[2]));
      poles.push_back(section.order == 1 ? Complex(-d[0] / d[1]) : (root - d[1]) / (2 * d[2]));
      product *= section.order == 1 ? std::abs(poles.back()) : std::norm(poles.back());
    }
    const double scale = std::pow(theta[0] / product, 1.0 / n);
    std::vector<Complex> roots;
    for (const Complex& pole : poles) {
      Complex root = pole * scale;
      for (int i = 0; i < 20; ++i) root -= value(root, false) / value(root, true);
      EXPECT_NEAR(std::abs(root / scale - pole), 0, 2e-4) << n << ": " << pole;
      for (const Complex& other : roots) EXPECT_GT(std::abs(root - other), 0.1) << n;
      roots.push_back(root);
    }
    EXPECT_EQ(roots.size(), static_cast<std::size_t>(n + 1) / 2);
  }
}

TEST(FilterDesign, LowOrdersHaveTheKnownSections) {
  const double t = std::tan(kPi * 0.2);
  const FilterSections first = Digitize(ButterworthPrototype(1), Scalar(2), kLowPass, 0.1);
  EXPECT_EQ(Text(Value(first.numerators)), Text(Mat({{t, t, 0}})));
  EXPECT_EQ(Text(Value(first.denominators)), Text(Mat({{1 + t, t - 1, 0}})));
  // Quarter of the sampling rate: t = 1, the half-band filter (1 + z^-1)^2 / (2 + sqrt(2) +
  // (2 - sqrt(2)) z^-2).
  const FilterSections second = Digitize(ButterworthPrototype(2), Scalar(0.25), kLowPass, 1);
  for (std::size_t j = 0; j < 3; ++j) {
    const double b[] = {1, 2, 1}, a[] = {2 + std::sqrt(2.0), 0, 2 - std::sqrt(2.0)};
    EXPECT_NEAR(second.numerators(0, j).real(), b[j], 1e-14);
    EXPECT_NEAR(second.denominators(0, j).real(), a[j], 1e-14);
  }
  // The channel filter is a Butterworth low pass at 5/4 of the class.
  const FilterSections sae = SaeSections(Scalar(1), 0.1);
  const FilterSections same = Digitize(ButterworthPrototype(2), Scalar(1.25), kLowPass, 0.1);
  for (const double omega : {0.1, 0.7, 2.5})
    EXPECT_NEAR(std::abs(Transfer(sae, omega) - Transfer(same, omega)), 0, 1e-14);
}

Value Ramp(std::size_t n, double step, const std::function<double(double)>& f) {
  std::vector<Complex> t;
  std::vector<Complex> y;
  for (std::size_t i = 0; i < n; ++i) {
    t.push_back(step * static_cast<double>(i));
    y.push_back(f(t.back().real()));
  }
  return XY(t, y);
}

TEST(FilterCascade, IsTheDifferenceEquationSectionBySection) {
  // Plain complex arithmetic, one section after the other over the whole channel.
  std::mt19937 engine(7);
  std::uniform_real_distribution<double> uniform(-0.4, 0.4);
  // Lengths on both sides of the samples that the last of some sections lags behind the first.
  const std::pair<std::size_t, std::size_t> sizes[] = {{1, 40}, {2, 1}, {3, 3}, {4, 1},
                                                       {4, 6},  {4, 7}, {5, 2}, {7, 40}};
  for (const auto& [sections, n] : sizes)
    for (const std::size_t columns : {3u, 5u})
      for (const bool complex : {false, true})
        for (const int start : {kStartZero, kStartConstant}) {
          Value::Matrix b(sections, columns), a(sections, columns);
          for (auto* m : {&b, &a})
            for (Complex& z : m->data())
              z = Complex(uniform(engine), complex ? uniform(engine) : 0);
          for (std::size_t r = 0; r < sections; ++r) a(r, 0) = r == 0 ? Complex(1) : Complex(2.5);
          std::vector<Complex> x(n);
          for (Complex& z : x) z = uniform(engine);

          std::vector<Complex> w(columns - 1, start == kStartConstant ? x[0] : 0);
          w.insert(w.end(), x.begin(), x.end());
          for (std::size_t r = 0; r < sections; ++r) {
            std::vector<Complex> y = w;
            for (std::size_t k = columns - 1; k < w.size(); ++k) {
              y[k] = b(r, 0) / a(r, 0) * w[k];
              for (std::size_t j = 1; j < columns; ++j)
                y[k] += b(r, j) / a(r, 0) * w[k - j] - a(r, j) / a(r, 0) * y[k - j];
            }
            w = y;
          }
          std::vector<Complex> t(n);
          for (std::size_t i = 0; i < n; ++i) t[i] = static_cast<double>(i);
          Value r;
          fn::filter(r, Sig(t, {x, x}), Value(b), Value(a), start);
          ASSERT_TRUE(r.IsSignal());
          for (std::size_t i = 0; i < n; ++i) {
            EXPECT_NEAR(std::abs(r.GetMatrix()(0, i) - w[i + columns - 1]), 0, 1e-14);
            EXPECT_EQ(r.GetMatrix()(0, i), r.GetMatrix()(1, i));
          }
        }
}

TEST(FilterCascade, RefusesInOrder) {
  const Value x = XY({0, 1, 2}, {1, 2, 3}), b = Mat({{1, 2, 1}}), a = Mat({{4, 0, 0}});
  const auto run = [](const Value& signal, const Value& num, const Value& den, int start) {
    return Outcome([&](Value& r) { fn::filter(r, signal, num, den, start); });
  };
  EXPECT_EQ(run(x, b, a, 0), Text(XY({0, 1, 2}, {0.25, 1, 2})));
  EXPECT_EQ(run(b, b, a, 0), "CType: Input object of wrong type. Time signal expected.");
  EXPECT_EQ(run(XY({0}, {{0, 1}}), b, a, 0), "CType: Real input object expected.");
  EXPECT_EQ(run(x, Vec({1, 2, 1}), a, 0), "CType: Numerator & denominator must be of type MATRIX.");
  EXPECT_EQ(run(x, b, Mat({{1, 2}}), 0), "CType: Numerator & denominator must be of same size.");
  EXPECT_EQ(run(x, Mat({{1, 2}}), Mat({{1, 2}}), 0),
            "CType: Numerator & denominator must be of size Nx3 (case Low-/Highpass) or Nx5 (case "
            "Bandpass/-stop).");
  EXPECT_EQ(run(x, b, a, 2), "CFilter: Wrong condition: ZERO, CONSTANT expected.");
}

/// Gain of a sampled sinusoid at `f` in the middle of the filtered signal, and its delay in radians.
Complex Response(const Value& filtered, double step, double f) {
  const std::size_t n = filtered.Size2();
  Complex above = 0;
  double below = 0;
  for (std::size_t i = n / 4; i < 3 * n / 4; ++i) {
    above +=
        filtered.GetMatrix()(0, i) * std::polar(1.0, -2 * kPi * f * step * static_cast<double>(i));
    below += 0.5;
  }
  return above / below;
}

TEST(Filters, RunsHaveTheDesignedGainAndBackwardRunsNoPhase) {
  constexpr double kStep = 1e-3;
  constexpr double f = 50;  // 4000 samples are whole periods, and so is their middle half
  const Value x = Ramp(4000, kStep, [](double t) { return std::cos(2 * kPi * f * t); });
  const Value low = Scalar(60), high = Scalar(40), band = Vec({40, 70});
  using Run = std::function<void(Value&, const Value&, int type, bool backward)>;
  const auto edges = [&](int type) {
    return type == kLowPass ? low : type == kHighPass ? high : band;
  };
  const struct {
    AnalogPrototype prototype;
    Run run;
  } cases[] = {
      {ButterworthPrototype(4),
       [&](Value& r, const Value& s, int type, bool backward) {
         fn::butterworthFilter(r, s, edges(type), 4, type, 1, 0, 0, 0, 1, backward);
       }},
      {SineButterworthPrototype(3),
       [&](Value& r, const Value& s, int type, bool backward) {
         fn::sineButterworthFilter(r, s, edges(type), 3, type, 1, 0, 0, 0, 1, backward);
       }},
      {BesselPrototype(5),
       [&](Value& r, const Value& s, int type, bool backward) {
         fn::besselFilter(r, s, edges(type), 5, type, 1, 0, 0, 0, 1, backward);
       }},
      {ChebyshevOnePrototype(4, 0.3),
       [&](Value& r, const Value& s, int type, bool backward) {
         fn::chebyOneFilter(r, s, edges(type), 0.3, 4, type, 1, 0, 0, 0, 1, backward);
       }},
      {ChebyshevTwoPrototype(3, 0.2),
       [&](Value& r, const Value& s, int type, bool backward) {
         fn::chebyTwoFilter(r, s, edges(type), 0.2, 3, type, 1, 0, 0, 0, 1, backward);
       }},
  };
  for (const auto& c : cases)
    for (int type = kLowPass; type <= kBandStop; ++type) {
      const Complex expected =
          Transfer(Digitize(c.prototype, edges(type), type, kStep), 2 * kPi * f * kStep);
      Value r;
      c.run(r, x, type, false);
      EXPECT_NEAR(std::abs(Response(r, kStep, f) - expected), 0, 2e-5) << type;
      c.run(r, x, type, true);
      EXPECT_NEAR(std::abs(Response(r, kStep, f) - std::norm(expected)), 0, 2e-5) << type;
      EXPECT_EQ(r.GetVector().size(), 4000u);
    }
}

TEST(Filters, BackwardRunsAreForwardRunsOfTheReversedOutcome) {
  // With either start condition; the signal is 0 at neither end.
  const Value x = Ramp(40, 1, [](double t) { return 3 + std::cos(t) + 0.1 * t; });
  const auto reversed = [&](const Value& signal) {
    std::vector<Complex> y(signal.GetMatrix().data().begin(), signal.GetMatrix().data().end());
    std::reverse(y.begin(), y.end());
    return XY({x.GetVector().begin(), x.GetVector().end()}, y);
  };
  using Run = std::function<void(Value&, const Value&, int start1, int start2, bool backward)>;
  const Value cf = Scalar(0.1);
  const Run runs[] = {
      [&](Value& r, const Value& s, int start1, int start2, bool backward) {
        fn::butterworthFilter(r, s, cf, 3, kLowPass, 1, 0, 0, start1, start2, backward);
      },
      [&](Value& r, const Value& s, int start1, int start2, bool backward) {
        fn::sineButterworthFilter(r, s, cf, 3, kLowPass, 1, 0, 0, start1, start2, backward);
      },
      [&](Value& r, const Value& s, int start1, int start2, bool backward) {
        fn::besselFilter(r, s, cf, 3, kLowPass, 1, 0, 0, start1, start2, backward);
      },
      [&](Value& r, const Value& s, int start1, int start2, bool backward) {
        fn::chebyOneFilter(r, s, cf, 0.3, 3, kLowPass, 1, 0, 0, start1, start2, backward);
      },
      [&](Value& r, const Value& s, int start1, int start2, bool backward) {
        fn::chebyTwoFilter(r, s, cf, 0.3, 3, kLowPass, 1, 0, 0, start1, start2, backward);
      },
      [&](Value& r, const Value& s, int start1, int start2, bool backward) {
        fn::saeFilter(r, s, cf, 1, 0, 0, start1, start2, backward);
      },
  };
  for (const Run& run : runs)
    for (const int start1 : {kStartZero, kStartConstant})
      for (const int start2 : {kStartZero, kStartConstant}) {
        Value both, forward, again;
        run(both, x, start1, start2, true);
        run(forward, x, start1, start1, false);
        run(again, reversed(forward), start2, start2, false);
        EXPECT_TRUE(IsClose(both, reversed(again), 1e-12)) << &run - runs << start1 << start2;
      }
}

TEST(Filters, ZeroPhaseRunsKeepSymmetry) {
  // A bump in the middle stays symmetric: what the filter remembers of it is gone at both ends.
  const Value bump =
      Ramp(2001, 0.01, [](double t) { return std::exp(-std::pow((t - 10) / 0.2, 2)); });
  Value r;
  fn::chebyOneFilter(r, bump, Scalar(5), 0.5, 5, kLowPass, 1, 0, 0, 0, 0, true);
  double largest = 0;
  for (std::size_t i = 0; i <= 1000; ++i) {
    EXPECT_NEAR(std::abs(r.GetMatrix()(0, i) - r.GetMatrix()(0, 2000 - i)), 0, 1e-8) << i;
    largest = std::max(largest, r.GetMatrix()(0, i).real());
  }
  EXPECT_EQ(largest, r.GetMatrix()(0, 1000).real());
  fn::saeFilter(r, bump, Scalar(1), 1, 0, 0, 0, 0, true);
  for (std::size_t i = 0; i <= 1000; ++i)
    EXPECT_NEAR(std::abs(r.GetMatrix()(0, i) - r.GetMatrix()(0, 2000 - i)), 0, 1e-8) << i;
}

TEST(Filters, KeepConstantsKindsAndDirections) {
  const Value flat = Sig({0, 1, 2, 3}, {{2, 2, 2, 2}, {-5, -5, -5, -5}});
  Value r;
  fn::butterworthFilter(r, flat, Scalar(0.1), 5, kLowPass, 1, 0, 0, 1, 1, true);
  ASSERT_TRUE(r.IsSignal());
  EXPECT_TRUE(IsClose(r, flat, 1e-12)) << Text(r);

  const Value up = XY({0, 1, 2, 3, 4}, {0, 2, 1, 5, 3}),
              down = XY({4, 3, 2, 1, 0}, {3, 5, 1, 2, 0});
  Value r_down;
  fn::besselFilter(r, up, Scalar(0.2), 2, kLowPass, 1, 0, 0, 0, 0, false);
  fn::besselFilter(r_down, down, Scalar(0.2), 2, kLowPass, 1, 0, 0, 0, 0, false);
  ASSERT_TRUE(r_down.IsXYData());
  EXPECT_TRUE(r_down.IsFlipped());
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(r.GetMatrix()(0, i), r_down.GetMatrix()(0, 4 - i));

  // Resampled to the smallest step, in either direction.
  const Value gap = XY({0, 1, 4}, {0, 2, 8}), gap_down = XY({4, 1, 0}, {8, 2, 0});
  const Value even = XY({0, 1, 2, 3, 4}, {0, 2, 4, 6, 8});
  fn::butterworthFilter(r, gap, Scalar(0.2), 11, kHighPass, 1, 0, 0, 0, 0, true);
  fn::butterworthFilter(r_down, even, Scalar(0.2), 11, kHighPass, 1, 0, 0, 0, 0, true);
  EXPECT_EQ(r, r_down);
  fn::butterworthFilter(r_down, gap_down, Scalar(0.2), 11, kHighPass, 1, 0, 0, 0, 0, true);
  EXPECT_TRUE(r_down.IsFlipped());
  EXPECT_EQ(r_down.Size2(), 5u);
}

TEST(Filters, DecimateTakesEveryNthSampleOfTheFirstChannel) {
  const auto decimated = [](const Value& x, int factor, int ratio) {
    Value r;
    fn::decimateFilter(r, x, factor, ratio, 1, 0, 0);
    return r;
  };
  const Value x = Ramp(10, 0.5, [](double t) { return t * t; });
  Value filtered;
  // New rate 2 / 2, cut-off a quarter of it.
  fn::butterworthFilter(filtered, x, Scalar(0.25), 2, kLowPass, 1, 0, 0, 1, 1, true);
  const Value r = decimated(x, 2, 4);
  ASSERT_EQ(r.Size2(), 5u);
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_EQ(r.GetVector()(i), x.GetVector()(2 * i));
    EXPECT_EQ(r.GetMatrix()(0, i), filtered.GetMatrix()(0, 2 * i));
  }
  EXPECT_EQ(decimated(x, 3, 2).Size2(), 3u);
  EXPECT_EQ(decimated(x, 11, 2), Value());
  const Value two = decimated(Sig({3, 2, 1, 0}, {{1, 1, 1, 1}, {4, 4, 4, 4}}), 2, 2);
  EXPECT_TRUE(two.IsSignal());
  EXPECT_TRUE(IsClose(two, Sig({3, 1}, {{1, 1}}), 1e-12)) << Text(two);
}

TEST(Filters, SmoothAveragesShrinkingWindows) {
  const auto smooth = [](const Value& x, int points) {
    return Outcome([&](Value& r) { fn::smoothFilter(r, x, points); });
  };
  EXPECT_EQ(smooth(XY({0, 1, 2}, {0, 3, 0}), 1), Text(XY({0, 1, 2}, {1.5, 1, 1.5})));
  EXPECT_EQ(smooth(Sig({3, 2, 1, 0}, {{0, 3, 6, 3}, {1, 1, 1, 5}}), 1),
            Text(Sig({3, 2, 1, 0}, {{1.5, 3, 4, 4.5}, {1, 1, 7.0 / 3, 3}})));
  EXPECT_EQ(smooth(XY({0, 1, 1, 2}, {0, 2, 4, 0}), 1), Text(XY({0, 1, 2}, {1.5, 1, 1.5})));
  // Against the sums of the windows themselves, where they start at any place of a block.
  for (const std::size_t n : {6u, 7u, 20u, 23u})
    for (std::size_t p = 1; 2 * p <= n; ++p) {
      const Value x = Ramp(n, 1, [](double t) { return std::cos(t * t); });
      Value r;
      fn::smoothFilter(r, x, static_cast<int>(p));
      for (std::size_t i = 0; i < n; ++i) {
        // Ends hold the samples up to p behind i, or p in front of it.
        const std::size_t first = i < p ? 0 : i - p;
        const std::size_t last = std::min(n - 1, i + p);
        Complex sum = 0;
        for (std::size_t k = first; k <= last; ++k) sum += x.GetMatrix()(0, k);
        EXPECT_NEAR(r.GetMatrix()(0, i).real(), sum.real() / static_cast<double>(last - first + 1),
                    1e-15 * 4)
            << n << ' ' << p << ' ' << i;
      }
    }
  // What is not finite reaches the windows that hold it.
  EXPECT_EQ(smooth(XY({0, 1, 2, 3, 4, 5}, {NAN, 1, 2, 3, 4, 5}), 1),
            Text(XY({0, 1, 2, 3, 4, 5}, {NAN, NAN, 2, 3, 4, 4.5})));
  EXPECT_EQ(smooth(Vec({1, 2}), 1), "CType: Input object of wrong type. Time signal expected.");
  EXPECT_EQ(smooth(XY({0, 1}, {1, {0, 1}}), 1), "CType: Real input SIGNAL expected.");
  const std::string range =
      "CFilter: Number of points must be a positive integer and less than half the size of the "
      "input.";
  EXPECT_EQ(smooth(XY({0, 1, 2}, {0, 3, 0}), 0), range);
  EXPECT_EQ(smooth(XY({0, 1, 2}, {0, 3, 0}), -1), range);
  EXPECT_EQ(smooth(XY({0, 1, 2}, {0, 3, 0}), 2), range);
  EXPECT_EQ(smooth(XY({1, 1, 1, 1}, {0, 3, 0, 1}), 2), range);
}

TEST(Filters, AnswerOrRefuseOddSignals) {
  // No crash, no endless loop, and nothing thrown but the numeric side's own exceptions.
  const double huge = 1e308, tiny = 5e-324;
  const std::vector<Value> signals = {XY({0, 1}, {1, NAN}),
                                      XY({1, 1, 1}, {1, 2, 3}),
                                      XY({0, 0, 1}, {1, 2, 3}),
                                      XY({0, 2, 1, 3}, {1, 2, 3, 4}),
                                      XY({0, 1, 0}, {1, 2, 3}),
                                      XY({-huge, 0, huge}, {huge, -huge, huge}),
                                      XY({0, tiny, 10 * tiny}, {1, 2, 3}),
                                      XY({0, NAN, 2}, {1, 2, 3}),
                                      XY({0, 1, INFINITY}, {1, 2, 3}),
                                      XY({-INFINITY, 1, INFINITY}, {1, 2, 3}),
                                      XY({3, 2, 0}, {INFINITY, 2, NAN}),
                                      Value::Signal(RawVector({0, 1, 2}), Value::Matrix(0, 3)),
                                      Value::Signal(RawVector({0, 1, 3}), Value::Matrix(0, 3)),
                                      Value()};
  const std::function<void(Value&, const Value&)> functions[] = {
      [](Value& r, const Value& s) {
        fn::butterworthFilter(r, s, Scalar(0.1), 4096, 0, 1, 0, 0, 1, 1, true);
      },
      [](Value& r, const Value& s) {
        fn::chebyOneFilter(r, s, Vec({0.1, 0.2}), 1e300, 3, 3, 0, 0, 0, 1, 1, true);
      },
      [](Value& r, const Value& s) {
        fn::chebyTwoFilter(r, s, Scalar(0.1), 1e-300, 2, 1, 2, 0, 0, 1, 1, true);
      },
      [](Value& r, const Value& s) { fn::saeFilter(r, s, Scalar(0.1), 3, 0, 0, 1, 1, true); },
      [](Value& r, const Value& s) {
        fn::decimateFilter(r, s, 2147483647, 2147483647, 1, NAN, INFINITY);
      },
      [](Value& r, const Value& s) { fn::smoothFilter(r, s, 1); },
  };
  for (const auto& f : functions)
    for (const Value& signal : signals) {
      const std::string outcome = Outcome([&](Value& r) { f(r, signal); });
      EXPECT_TRUE(IsSignalOrRefusal(outcome)) << outcome;
    }
}

TEST(Filters, RefuseInOrder) {
  const Value x = XY({0, 0.5, 1}, {1, 2, 3});
  const auto butter = [](const Value& s, const Value& cf, int order, int type, int start = 0) {
    return Outcome([&](Value& r) {
      fn::butterworthFilter(r, s, cf, order, type, 1, 0, 0, start, start, false);
    });
  };
  const auto bessel = [&](int order) {
    return Outcome(
        [&](Value& r) { fn::besselFilter(r, x, Scalar(0.1), order, 0, 1, 0, 0, 0, 0, false); });
  };
  const auto cheby = [&](double ripple, bool second) {
    return Outcome([&](Value& r) {
      (second ? fn::chebyTwoFilter : fn::chebyOneFilter)(r, x, Scalar(0.1), ripple, 2, 0, 1, 0, 0,
                                                         0, 0, false);
    });
  };
  const Value cf = Scalar(0.3);
  EXPECT_EQ(butter(Vec({{0, 1}}), cf, 0, 9), "CType: Real input object expected.");
  EXPECT_EQ(butter(Vec({1}), cf, 0, 9), "CType: Input object of wrong type. Time signal expected.");
  EXPECT_EQ(butter(Value(), cf, 0, 9), "CType: Input object of wrong type. Time signal expected.");
  EXPECT_EQ(butter(XY({0}, {1}), cf, 0, 9), "CDimension: Signal must have at least 2 data point.");
  EXPECT_EQ(butter(x, Scalar(0, 1), 0, 9), "CFilter: Order must be positive.");
  EXPECT_EQ(butter(x, Scalar(0, 1), 2147483647, 9), "CFilter: Order must not exceed 4096.");
  EXPECT_EQ(bessel(0), "CFilter: Order must be within [1,10].");
  EXPECT_EQ(bessel(11), "CFilter: Order must be within [1,10].");
  EXPECT_EQ(cheby(0, false), "CFilter: Ripple must be positive.");
  EXPECT_EQ(cheby(NAN, false), "CFilter: Ripple must be positive.");
  EXPECT_EQ(cheby(-1, true), "CFilter: Ripple must be positive and not equal to 1.0.");
  EXPECT_EQ(cheby(1, true), "CFilter: Ripple must be positive and not equal to 1.0.");
  EXPECT_EQ(cheby(1.5, true), "CFilter: Ripple must be less than 1.0.");

  const struct {
    Value cf;
    int type;
    const char* text;
  } cutoffs[] = {
      {Scalar(0, 1), 9, "CType: Cutoff frequency must be real."},
      {Vec({0.1, {0, 1}}), 0, "CType: Cutoff frequency must be real."},
      {Value(true), 0,
       "CFilter: Cutoff has to be SCALAR (in case LOWPASS or HIGHPASS) or VECTOR of size 2 (in "
       "case "
       "BANDPASS or BANDSTOP)."},
      {Vec({0.1, 0.2}), kHighPass, "CDomain: Cutoff must be type of scalar."},
      {Vec({0.1}), kBandPass, "CFilter: Vector with lower and upper cutoff expected."},
      {Vec({0.2, 0.2}), kBandStop, "CFilter: Vector with lower and upper cutoff expected."},
      {Vec({0.2, NAN}), kBandStop, "CFilter: Vector with lower and upper cutoff expected."},
      {Vec({0, 0.2}), kBandPass,
       "CDomain: Cutoff frequencies cf out of range. Must fulfill 0.0 < cf < '1.000000' ."},
      {Vec({0.1, 1}), kBandPass,
       "CDomain: Cutoff frequencies cf out of range. Must fulfill 0.0 < cf < '1.000000' ."},
      {cf, kBandPass, "CDomain: Cutoff must be type of vector."},
      {Scalar(1), kLowPass,
       "CDomain: Cutoff frequency cf out of range. Must fulfill 0.0 < cf < '1.000000' ."},
      {Scalar(-1), 9,
       "CDomain: Cutoff frequency cf out of range. Must fulfill 0.0 < cf < '1.000000' ."},
      {Scalar(NAN), kLowPass,
       "CDomain: Cutoff frequency cf out of range. Must fulfill 0.0 < cf < '1.000000' ."},
      {cf, 4, "CType: Wrong type: LOWPASS, HIGHPASS, BANDPASS or BANDSTOP expected."},
      {cf, -1, "CType: Wrong type: LOWPASS, HIGHPASS, BANDPASS or BANDSTOP expected."},
      // The prewarped edge is at pi/2 up to the tolerance of zero.
      {Scalar(1 - 1e-10), kLowPass, "CDomain: Input to close to Pi/2.0 ."},
  };
  for (const auto& c : cutoffs) EXPECT_EQ(butter(x, c.cf, 2, c.type), c.text);
  EXPECT_EQ(butter(x, cf, 2, kLowPass, 2), "CFilter: Wrong condition: ZERO, CONSTANT expected.");
  EXPECT_EQ(butter(XY({0, NAN, 1}, {1, 2, 3}), cf, 2, kLowPass).substr(0, 1), "C");

  const auto sae = [](const Value& s, const Value& f) {
    return Outcome([&](Value& r) { fn::saeFilter(r, s, f, 1, 0, 0, 0, 0, false); });
  };
  EXPECT_EQ(sae(XY({0}, {1}), cf), "CDimension: Signal must have at least 2 data points.");
  EXPECT_EQ(sae(x, Scalar(1)),
            "CDomain: Cutoff frequency cf out of range. Must fulfill 0.0 < cf < '1.000000' .");
  EXPECT_EQ(sae(x, Vec({0.1, 0.2})), "CDomain: Cutoff must be type of scalar.");

  const auto decimate = [](const Value& s, int factor, int ratio) {
    return Outcome([&](Value& r) { fn::decimateFilter(r, s, factor, ratio, 1, 0, 0); });
  };
  EXPECT_EQ(decimate(Vec({{0, 1}}), 1, 1),
            "CType: Input object of wrong type. Time signal expected.");
  EXPECT_EQ(decimate(XY({0}, {{0, 1}}), 1, 1),
            "CDimension: Signal must have at least 2 data point.");
  EXPECT_EQ(decimate(XY({0, 1}, {{0, 1}, 1}), 1, 1), "CType: Real input SIGNAL expected.");
  EXPECT_EQ(decimate(x, 1, 1), "CFilter: The decimation factor must be greater than 1.");
  EXPECT_EQ(decimate(x, 2, 1),
            "CFilter: The ratio of the new sampling rate to the cut-off frequency has to be 2 or "
            "more.");
}

}  // namespace
}  // namespace corvath::math
