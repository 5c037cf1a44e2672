#include "variant/signals/filter_design.h"

#include "foundation/constants.h"
#include "support/values.h"
#include "transfer_function.h"
#include "variant/signals/filter_cascade.h"

namespace corvath::math {
namespace {

using namespace support;

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

TEST(FilterDesign, ChannelFilterIsAButterworthLowPassAtFiveQuartersOfTheClass) {
  const FilterSections sae = SaeSections(Scalar(1), 0.1);
  const FilterSections same = Digitize(ButterworthPrototype(2), Scalar(1.25), kLowPass, 0.1);
  for (const double omega : {0.1, 0.7, 2.5})
    EXPECT_NEAR(std::abs(Transfer(sae, omega) - Transfer(same, omega)), 0, 1e-14);
}

}  // namespace
}  // namespace corvath::math
