#include "support/values.h"
#include "variant/functions/calculus.h"
#include "variant/functions/interpolation.h"
#include "variant/operators/power_mean.h"
#include "variant/signals/timeline.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

Value Sampled(const std::vector<Complex>& t, const std::function<double(double)>& f) {
  std::vector<Complex> y;
  for (const Complex& x : t) y.push_back(f(x.real()));
  return XY(t, y);
}

std::string Interpolated(const Value& signal, const std::vector<Complex>& axis, int degree,
                         double d0 = 0, double d1 = 0) {
  return Outcome([&](Value& r) { Interpolate(r, signal, RawVector(axis), degree, d0, d1); });
}

void ExpectInterpolates(const std::function<double(double)>& f, const std::vector<Complex>& knots,
                        const std::vector<Complex>& axis, int degree, double d0, double d1) {
  Value r;
  Interpolate(r, Sampled(knots, f), RawVector(axis), degree, d0, d1);
  const Value expected = Sampled(axis, f);
  ASSERT_EQ(r.Size(), expected.Size());
  for (std::size_t i = 0; i < axis.size(); ++i) {
    EXPECT_EQ(r.GetVector()(i), axis[i]);
    EXPECT_NEAR(r.GetMatrix()(0, i).real(), expected.GetMatrix()(0, i).real(), 1e-12)
        << "degree " << degree << " at " << axis[i].real();
  }
}

TEST(Interpolate, ReproducesPolynomialsOfItsDegree) {
  const std::vector<Complex> knots = {-1, 0, 0.5, 2, 3};
  const std::vector<Complex> beyond = {-2, -1, -0.75, 0.1, 0.5, 1, 2.5, 3, 4};
  ExpectInterpolates([](double t) { return 3 - 2 * t; }, knots, beyond, kLinear, 0, 0);
  ExpectInterpolates([](double t) { return 1 + t * (2 - 3 * t); }, knots, beyond, kQuadratic, 0, 0);
  // The clamped spline of a cubic with the cubic's own end slopes is the cubic, outside as well.
  const auto cubic = [](double t) { return 1 + t * (2 + t * (-3 + 2 * t)); };
  ExpectInterpolates(cubic, knots, beyond, kSpline, 14, 38);
  ExpectInterpolates(cubic, {-1, 3}, beyond, kSpline, 14, 38);
  const std::vector<Complex> inside = {-1, -0.75, 0.1, 0.5, 2.9, 3};
  ExpectInterpolates([](double t) { return 1 + t * (t * (2 - t * t)); }, knots, inside, 4, 0, 0);
}

TEST(Interpolate, FindsTheSegmentsOfAnyAxis) {
  std::vector<Complex> knots;
  for (int i = 0; i < 100; ++i) knots.push_back(i + 0.4 * std::sin(i));
  const Value signal = Sampled(knots, [](double t) { return std::cos(t * t); });
  // Dense, with gaps, beyond both ends, on knots, back and forth; each abscissa also alone.
  const std::vector<std::vector<Complex>> axes = {
      {-3, 0, 0.01, 0.5, 0.9, 1.1, 40, 41, 98, 99, 140},
      {knots[0], knots[1], knots[50], knots[99]},
      {-5, 60, 3, 3, 80, 79, 2, 120},
  };
  for (const auto& axis : axes) {
    Value r;
    Interpolate(r, signal, RawVector(axis), kLinear, 0, 0);
    for (std::size_t i = 0; i < axis.size(); ++i) {
      Value alone;
      Interpolate(alone, signal, RawVector({axis[i]}), kLinear, 0, 0);
      EXPECT_EQ(r.GetMatrix()(0, i), alone.GetMatrix()(0, 0)) << i;
    }
    EXPECT_TRUE(axis[0] != knots[0] || r.GetMatrix()(0, 2) == signal.GetMatrix()(0, 50));
  }
}

TEST(Interpolate, KeepsKindAndDirectionAndMergesDuplicates) {
  const Value up = Sig({0, 1, 2}, {{0, 1, 4}, {0, 2, 2}}),
              down = Sig({2, 1, 0}, {{4, 1, 0}, {2, 2, 0}});
  EXPECT_EQ(Interpolated(up, {2, 0.5}, kLinear), Text(Sig({0.5, 2}, {{0.5, 4}, {1, 2}})));
  EXPECT_EQ(Interpolated(down, {0.5, 2}, kLinear), Text(Sig({2, 0.5}, {{4, 0.5}, {2, 1}})));
  EXPECT_EQ(Interpolated(XY({0, 1, 1, 2}, {0, 4, 6, 7}), {0.5, 1, 1.5}, kLinear),
            Text(XY({0.5, 1, 1.5}, {2.5, 5, 6})));
  EXPECT_EQ(Interpolated(XY({0, 1}, {0, 1}), {2, -1}, kLinear), Text(XY({-1, 2}, {-1, 2})));
  EXPECT_EQ(Interpolated(XY({0, 1}, {0, 1}), {3}, kQuadratic), Text(XY({3}, {3})));  // two points
  EXPECT_EQ(Interpolated(up, {}, kLinear), Text(Value()));
}

TEST(Interpolate, RefusesInOrder) {
  const Value x = XY({0, 1, 2}, {0, 1, 4});
  EXPECT_EQ(Interpolated(Vec({{0, 1}}), {1}, 1), "CType: Real input object expected.");
  EXPECT_EQ(Interpolated(Vec({1}), {1}, 1), "CType: Input object of wrong type. Signal expected.");
  EXPECT_BEGINS(Interpolated(XY({0}, {1}), {1}, -1), "CDimension: Signal must have at least 2");
  EXPECT_EQ(Interpolated(x, {1}, -1), "CDimension: Degree of interpolation must be positive.");
  EXPECT_EQ(Interpolated(XY({0, 1, 2, 3, 4}, {0, 1, 4, 9, 16}), {1}, 3),
            "CDimension: in object of wrong dimension. Signal must have exactly 4 points of time "
            "for interpolation.");
  EXPECT_BEGINS(Interpolated(x, {1}, 2147483647), "CDimension: in object of wrong dimension.");
  const Value four = XY({0, 1, 2, 3}, {0, 1, 4, 9});
  EXPECT_EQ(Interpolated(four, {1, 3.5}, 3),
            "CDimension: Can not extrapolate timesignal beyond upper boundaries");
  EXPECT_EQ(Interpolated(four, {-1, 3}, 3),
            "CDimension: Can not extrapolate timesignal beyond lower boundaries");
  EXPECT_EQ(Interpolated(four, {1, 7, 2}, 3), "CDomain: Index out of range.");
  std::vector<Complex> many(5000);
  for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i);
  EXPECT_BEGINS(Interpolated(XY(many, many), {1}, 4999), "CDimension: Degree of interpolation");
  const Value one_abscissa = XY({1, 1}, {2, 3});
  EXPECT_EQ(Interpolated(one_abscissa, {1}, kSpline),
            "CDimension: Input object of wrong dimension. Signal must have at least length 2 for "
            "interpolation.");
  EXPECT_EQ(Interpolated(one_abscissa, {1}, kQuadratic),
            "CDimension: Input object of wrong dimension. Signal must have at least 2 points of "
            "time for interpolation.");
  EXPECT_BEGINS(Interpolated(one_abscissa, {1}, kLinear), "CDimension: Signal must have at least");
}

TEST(Interpolate, ByStepEndsAtTheLastAbscissa) {
  const auto by_step = [](const Value& signal, double step, int degree) {
    return Outcome([&](Value& r) { InterpolateByStep(r, signal, step, degree, 0, 0); });
  };
  Value r;
  InterpolateByStep(r, XY({0, 1}, {0, 10}), 0.3, kLinear, 0, 0);
  EXPECT_TRUE(IsClose(r, XY({0, 0.3, 0.6, 0.9, 1}, {0, 3, 6, 9, 10}), 1e-15)) << Text(r);
  InterpolateByStep(r, XY({1, 0}, {10, 0}), 0.5, kLinear, 0, 0);
  EXPECT_EQ(r, XY({0, 0.5, 1}, {0, 5, 10}));  // ascends
  EXPECT_EQ(by_step(XY({0, 2, 1, 3}, {0, 1, 2, 3}), 0.5, kSpline),
            "CVariant: Operation is not allowed for unordered input");
  const Value x = XY({0, 1}, {0, 1});
  EXPECT_EQ(by_step(x, 1e-9, 1), "CDomain: Interpolation increment of size zero detected.");
  EXPECT_EQ(by_step(XY({0, 1}, {0, {0, 1}}), 1, 1), "CType: Real input object expected.");
  EXPECT_EQ(by_step(Scalar(1), 1, 1), "CType: Input object of wrong type. Signal expected.");
  EXPECT_EQ(by_step(Value::Signal(RawVector({0, 1}), Value::Matrix(0, 2)), 1, 1),
            "CDimension: Invalid signal size. Impossible to interpolate.");
  EXPECT_EQ(by_step(x, -0.5, 1), "CDomain: Interpolation increment must be positive.");
  EXPECT_EQ(by_step(x, std::nan(""), 1), "CDomain: Interpolation increment must be positive.");
  EXPECT_BEGINS(by_step(XY({0, 1e18}, {0, 1}), 1, 1), "CDimension: Interpolation increment is");
}

TEST(Timeline, StepsAndEquality) {
  EXPECT_TRUE(IsEquidistant(XY({5, 1}, {0, 0})));
  EXPECT_TRUE(IsEquidistant(XY({0, 0.1, 0.2, 0.3}, {0, 0, 0, 0})));
  EXPECT_FALSE(IsEquidistant(XY({0, 1, 2.001}, {0, 0, 0})));
  // The smallest step 0.4 goes into the span 3 at most 8 times.
  EXPECT_EQ(SmallestStep(XY({0, 1, 1, 1.4, 3}, {0, 0, 0, 0, 0})), 3.0 / 8);
  EXPECT_EQ(Outcome([](Value&) { SmallestStep(XY({0}, {1})); }),
            "CDimension: Invalid signal size. Unable to calculate smallest step.");
  EXPECT_EQ(Outcome([](Value&) { SmallestStep(Scalar(1)); }),
            "CType: smallestStep: Input object of wrong type. SIGNAL or XYDATA expected.");
  EXPECT_EQ(Outcome([](Value&) { IsEquidistant(Scalar(1)); }),
            "CType: Equidistance only defined for SIGNAL and XYDATA.");

  Value a = XY({0, 1, 1}, {0, 1, 1}), b = XY({0.5, 1, 2}, {0, 1, 3});
  EqualizeTimelines(a, b, kLinear, 0, 0);
  EXPECT_EQ(a, XY({0, 0.5, 1, 1, 2}, {0, 0.5, 1, 1, 2}));  // equal points stay twice
  EXPECT_EQ(b, XY({0, 0.5, 1, 1, 2}, {-1, 0, 1, 1, 3}));
  EXPECT_EQ(Outcome([&](Value& r) { EqualizeTimelines(a, r, 1, 0, 0); }),
            "CType: Inputs must be of type SIGNAL or XYDATA.");
}

TEST(Timeline, CommonPartOfTwoTimelines) {
  const auto lct = OutcomeOf(fn::lct);
  const auto at = [](const std::vector<Complex>& t) {
    return Sig(t, {std::vector<Complex>(t.size())});
  };
  EXPECT_EQ(lct(at({0, 1, 2}), at({0.5, 1, 3})), Text(Vec({0.5, 1, 2})));
  EXPECT_EQ(lct(at({2, 1, 0}), at({3, 1, 1, 0.5})), Text(Vec({0.5, 1, 2})));
  EXPECT_EQ(lct(at({0, 1}), at({0, 1})), Text(Vec({0, 1})));
  EXPECT_EQ(lct(at({0, 1}), at({1, 2})), Text(Vec({1})));
  EXPECT_EQ(lct(at({0, 1}), at({2, 3})), "CDomain: Common timeline is empty.");
  EXPECT_EQ(lct(at({0, 1}), Vec({1})), "CType: Inputs must be of type SIGNAL or XYDATA.");
  Value empty;
  empty.SetKind(Value::SIGNAL);
  EXPECT_EQ(lct(at({0, 1}), empty), Text(Vec({})));
}

TEST(Timeline, MappingStacksDistinctChannels) {
  const auto mapping = [](const Value& a, const Value& b) {
    return Outcome([&](Value& r) { fn::mapping(r, a, b, kLinear, 0, 0); });
  };
  const Value g = Sig({0, 1}, {{1, 2}, {3, 4}});
  EXPECT_EQ(mapping(g, g), Text(g));
  EXPECT_EQ(mapping(XY({1, 0}, {2, 1}), g), Text(g));
  EXPECT_EQ(mapping(g, XY({0, 2}, {5, 7})),
            Text(Sig({0, 1, 2}, {{1, 2, 3}, {3, 4, 5}, {5, 6, 7}})));
  EXPECT_BEGINS(mapping(g, Scalar(1)), "CType: Mapping: Variant inputs must be of type SIGNAL or");
}

TEST(Timeline, WindowHoldsThePointsInside) {
  const auto window = OutcomeOf(fn::window);
  const Value up = Sig({0, 1, 2, 3}, {{5, 6, 7, 8}}), down = XY({3, 2, 1, 0}, {8, 7, 6, 5});
  EXPECT_EQ(window(up, 0.5, 2), Text(Sig({1, 2}, {{6, 7}})));
  EXPECT_EQ(window(down, 0.5, 2), Text(XY({2, 1}, {7, 6})));
  EXPECT_EQ(window(up, 1 + 1e-9, 2 - 1e-9), Text(Sig({1, 2}, {{6, 7}})));  // within the tolerance
  EXPECT_EQ(window(up, -5, 9), Text(up));
  EXPECT_EQ(window(up, 1.2, 1.8), Text(Value()));
  EXPECT_EQ(window(up, 4, 5), Text(Value()));
  EXPECT_EQ(window(up, -5, -4), Text(Value()));
  EXPECT_EQ(window(up, std::nan(""), 2), Text(Value()));
  EXPECT_EQ(window(up, 2, 1), "CDimension: Window: Minimum must be smaller than maximum.");
  EXPECT_BEGINS(window(XY({0}, {1}), 0, 1), "CDimension: Invalid signal size. Unable to");
  EXPECT_BEGINS(window(Scalar(1), 0, 1), "CType: Window: Functionality only defined for SIGNAL");
}

TEST(Calculus, DifferencesAndRunningIntegrals) {
  const auto derive = OutcomeOf(fn::derive);
  const auto integrate = OutcomeOf(fn::integrate);
  const Value g = Sig({0, 1, 3}, {{0, 2, 8}, {1, 1, 1}}), down = XY({3, 1, 0}, {8, 2, 0});
  EXPECT_EQ(derive(g, kForward), Text(Sig({0, 1}, {{2, 3}, {0, 0}})));
  EXPECT_EQ(derive(g, kBackward), Text(Sig({1, 3}, {{2, 3}, {0, 0}})));
  EXPECT_EQ(derive(down, kForward), Text(XY({1, 0}, {3, 2})));
  EXPECT_EQ(derive(XY({0, 1, 1, 2}, {0, 1, 3, 4}), kForward), Text(XY({0, 1}, {2, 2})));
  EXPECT_EQ(integrate(g, kForward), Text(Sig({0, 1}, {{1, 11}, {1, 3}})));
  EXPECT_EQ(integrate(down, kBackward), Text(XY({3, 1}, {11, 1})));
  const std::string only = " Please only use FORWARD or BACKWARD.";
  for (const auto& [f, unknown] :
       {std::pair<std::function<std::string(const Value&, int)>, std::string>{
            derive, "CType: Unknown difference type." + only},
        {integrate, "CType: Unknown type." + only}}) {
    EXPECT_EQ(f(g, 2), unknown);
    EXPECT_EQ(f(Vec({1, 3, 2}), 0), "CVariant: Operation is not allowed for unordered input");
    EXPECT_EQ(f(Scalar(1), 0), "CType: Input object of wrong type. Time signal expected.");
    EXPECT_EQ(f(XY({0, 1}, {{0, 1}, 1}), 0), "CType: Real input SIGNAL expected.");
    EXPECT_EQ(f(XY({0}, {1}), 0), "CDimension: Signal must have at least 2 data point.");
    EXPECT_EQ(f(XY({1, 1}, {1, 2}), 0), "CDimension: Signal must have at least 2 data point.");
  }
}

TEST(Calculus, AreasUnderTheLines) {
  const auto area = OutcomeOf<const Value&, double, double>(fn::area);
  const auto whole = [](const Value& s) { return Outcome([&](Value& r) { fn::area(r, s); }); };
  const Value x = XY({0, 1}, {0, 2}), g = Sig({3, 1, 0}, {{8, 2, 0}, {1, 1, 1}});
  EXPECT_EQ(whole(x), Text(Scalar(1)));
  EXPECT_EQ(whole(g), Text(Vec({11, 3})));
  EXPECT_EQ(whole(XY({0, 2}, {{1, 1}, {1, 3}})), Text(Scalar(2, 4)));
  EXPECT_EQ(area(x, 0.25, 0.75), Text(Scalar(0.5)));
  EXPECT_EQ(area(g, 0.5, 3), Text(Vec({10.75, 2.5})));
  EXPECT_EQ(area(x, 0, 1), Text(Scalar(1)));
  EXPECT_EQ(area(x, -0.1, 1), "CDomain: Bounds out of signal range.");
  EXPECT_EQ(area(x, 0, std::nan("")), "CDomain: Bounds out of signal range.");
  EXPECT_EQ(area(x, 0.75, 0.25), "CDimension: Window: Minimum must be smaller than maximum.");
  EXPECT_EQ(whole(XY({0}, {1})), "CDimension: Signal must have at least 2 data point.");
  EXPECT_EQ(whole(Scalar(1)), "CType: Input object of wrong type. Time signal expected.");
  EXPECT_BEGINS(whole(XY({0, 2, 1}, {0, 0, 0})), "CVariant: Operation is not allowed for");
  const Value no_channels = Value::Signal(RawVector({0, 1}), Value::Matrix(0, 2));
  EXPECT_EQ(whole(no_channels), "CDomain: Size of SIGNAL must be greater than zero.");
  EXPECT_EQ(area(no_channels, 0, 1), "CDimension: Invalid signal size. Unable to calculate area.");
}

TEST(PowerMean, IsTheMeanOfPowersOnAnEquidistantAxis) {
  const auto powmean = OutcomeOf(fn::powmean);
  EXPECT_EQ(powmean(XY({0, 1, 2, 3}, {1, 2, 3, 6}), 1), Text(Scalar(3)));
  EXPECT_EQ(powmean(Sig({0, 2, 4, 6}, {{1, 1, 7, 7}, {2, 2, 2, 2}}), 2), Text(Vec({5, 2})));
  Value r;
  fn::rms(r, XY({3, 1, 0}, {-4, -4, -4}));  // the axis may descend and be uneven
  EXPECT_TRUE(IsClose(r, Scalar(4), 1e-15));
  fn::rmsdev(r, XY({0, 1}, {1, 2}), XY({0, 2}, {4, 6}));  // the difference is -3 throughout
  EXPECT_TRUE(IsClose(r, Scalar(3), 1e-15));
  fn::powmeandev(r, XY({0, 1}, {5, 7}), XY({0, 1}, {4, 6}), 3);
  EXPECT_EQ(r, Scalar(1));
  const Value x = XY({0, 1}, {0, 2});
  EXPECT_EQ(powmean(x, 0), "CType: Real input object and positive exponent expected.");
  EXPECT_EQ(powmean(Scalar(1, 1), 1), "CType: Real input object and positive exponent expected.");
  EXPECT_EQ(powmean(Scalar(1), 1), "CType: Input object of wrong type. Time signal expected.");
  EXPECT_EQ(powmean(XY({1, 1}, {1, 2}), 1), "CType: At least two sample points expected.");
  EXPECT_EQ(powmean(Vec({1, 3, 2}), 1), "CVariant: Operation is not allowed for unordered input");
  const auto rmsdev = OutcomeOf(fn::rmsdev);
  EXPECT_EQ(rmsdev(x, Scalar(1)), "CType: rmsDev: Inputs must be of type SIGNAL or XYDATA.");
  EXPECT_BEGINS(rmsdev(x, Sig({0, 1}, {{1, 1}, {1, 1}})), "CDimension: rmsDev: Inputs need the");
  EXPECT_EQ(Outcome([&](Value& v) { fn::powmeandev(v, x, Scalar(1), 2); }),
            "CType: Inputs must be of type SIGNAL or XYDATA.");
}

}  // namespace
}  // namespace corvath::math
