#include "variant/signals/filters.h"

#include "foundation/constants.h"
#include "support/values.h"
#include "transfer_function.h"
#include "variant/signals/filter_cascade.h"
#include "variant/signals/filter_design.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

Value Ramp(std::size_t n, double step, const std::function<double(double)>& f) {
  std::vector<Complex> t;
  std::vector<Complex> y;
  for (std::size_t i = 0; i < n; ++i) {
    t.push_back(step * static_cast<double>(i));
    y.push_back(f(t.back().real()));
  }
  return XY(t, y);
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

struct FilterRun {
  const char* name;
  AnalogPrototype prototype;
  std::function<void(Value&, const Value& signal, const Value& cutoff, int type, int start1,
                     int start2, bool backward)>
      run;
};

std::vector<FilterRun> Runs() {
  return {{"Butterworth", ButterworthPrototype(4),
           [](Value& r, const Value& s, const Value& cf, int type, int s1, int s2, bool backward) {
             fn::butterworthFilter(r, s, cf, 4, type, 1, 0, 0, s1, s2, backward);
           }},
          {"Sine-Butterworth", SineButterworthPrototype(3),
           [](Value& r, const Value& s, const Value& cf, int type, int s1, int s2, bool backward) {
             fn::sineButterworthFilter(r, s, cf, 3, type, 1, 0, 0, s1, s2, backward);
           }},
          {"Bessel", BesselPrototype(5),
           [](Value& r, const Value& s, const Value& cf, int type, int s1, int s2, bool backward) {
             fn::besselFilter(r, s, cf, 5, type, 1, 0, 0, s1, s2, backward);
           }},
          {"Chebyshev 1", ChebyshevOnePrototype(4, 0.3),
           [](Value& r, const Value& s, const Value& cf, int type, int s1, int s2, bool backward) {
             fn::chebyOneFilter(r, s, cf, 0.3, 4, type, 1, 0, 0, s1, s2, backward);
           }},
          {"Chebyshev 2", ChebyshevTwoPrototype(3, 0.2),
           [](Value& r, const Value& s, const Value& cf, int type, int s1, int s2, bool backward) {
             fn::chebyTwoFilter(r, s, cf, 0.2, 3, type, 1, 0, 0, s1, s2, backward);
           }}};
}

TEST(Filters, RunsHaveTheDesignedGainAndBackwardRunsNoPhase) {
  constexpr double kStep = 1e-3;
  constexpr double f = 50;  // 4000 samples are whole periods, and so is their middle half
  const Value x = Ramp(4000, kStep, [](double t) { return std::cos(2 * kPi * f * t); });
  const Value edges[] = {Scalar(60), Scalar(40), Vec({40, 70}), Vec({40, 70})};
  for (const FilterRun& c : Runs())
    for (int type = kLowPass; type <= kBandStop; ++type) {
      const Complex expected =
          Transfer(Digitize(c.prototype, edges[type], type, kStep), 2 * kPi * f * kStep);
      Value r;
      c.run(r, x, edges[type], type, 0, 1, false);
      EXPECT_NEAR(std::abs(Response(r, kStep, f) - expected), 0, 2e-5) << c.name << type;
      c.run(r, x, edges[type], type, 0, 1, true);
      EXPECT_NEAR(std::abs(Response(r, kStep, f) - std::norm(expected)), 0, 2e-5) << c.name << type;
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
  std::vector<FilterRun> runs = Runs();
  runs.push_back({"channel",
                  {},
                  [](Value& r, const Value& s, const Value& cf, int, int s1, int s2,
                     bool backward) { fn::saeFilter(r, s, cf, 1, 0, 0, s1, s2, backward); }});
  for (const FilterRun& c : runs)
    for (const int start1 : {kStartZero, kStartConstant})
      for (const int start2 : {kStartZero, kStartConstant}) {
        Value both, forward, again;
        const Value cf = Scalar(0.1);
        c.run(both, x, cf, kLowPass, start1, start2, true);
        c.run(forward, x, cf, kLowPass, start1, start1, false);
        c.run(again, reversed(forward), cf, kLowPass, start2, start2, false);
        EXPECT_TRUE(IsClose(both, reversed(again), 1e-12)) << c.name << start1 << start2;
      }
}

TEST(Filters, KeepConstantsKindsAndDirections) {
  Value r;
  for (const Value& flat : {Sig({0, 1, 2, 3}, {{2, 2, 2, 2}, {-5, -5, -5, -5}}),
                            Sig({0, 1}, {{2, 2}, {-5, -5}})}) {  // two are the fewest
    fn::butterworthFilter(r, flat, Scalar(0.1), 5, kLowPass, 1, 0, 0, 1, 1, true);
    ASSERT_TRUE(r.IsSignal());
    EXPECT_TRUE(IsClose(r, flat, 1e-12)) << Text(r);
  }

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
}

}  // namespace
}  // namespace corvath::math
