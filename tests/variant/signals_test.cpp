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

TEST(Interpolate, RefusesAbsurdDegrees) {
  std::vector<Complex> many(5000);
  for (std::size_t i = 0; i < many.size(); ++i) many[i] = static_cast<double>(i);
  EXPECT_BEGINS(Interpolated(XY(many, many), {1}, 4999), "CDimension: Degree of interpolation");
}

TEST(Interpolate, ByStepNeedsChannels) {
  Value r;
  InterpolateByStep(r, XY({0, 1}, {0, 10}), 0.3, kLinear, 0, 0);
  EXPECT_TRUE(IsClose(r, XY({0, 0.3, 0.6, 0.9, 1}, {0, 3, 6, 9, 10}), 1e-15)) << Text(r);
  const Value no_channels = Value::Signal(RawVector({0, 1}), Value::Matrix(0, 2));
  EXPECT_EQ(Outcome([&](Value& result) { InterpolateByStep(result, no_channels, 1, 1, 0, 0); }),
            "CDimension: Invalid signal size. Impossible to interpolate.");
}

TEST(Timeline, EqualPointsStayTwice) {
  Value a = XY({0, 1, 1}, {0, 1, 1}), b = XY({0.5, 1, 2}, {0, 1, 3});
  EqualizeTimelines(a, b, kLinear, 0, 0);
  EXPECT_EQ(a, XY({0, 0.5, 1, 1, 2}, {0, 0.5, 1, 1, 2}));
  EXPECT_EQ(b, XY({0, 0.5, 1, 1, 2}, {-1, 0, 1, 1, 3}));
  EXPECT_EQ(Outcome([&](Value& r) { EqualizeTimelines(a, r, 1, 0, 0); }),
            "CType: Inputs must be of type SIGNAL or XYDATA.");
}

TEST(Timeline, CommonPartWithAnEmptyOneIsEmpty) {
  const auto lct = OutcomeOf(fn::lct);
  Value empty;
  empty.SetKind(Value::SIGNAL);
  EXPECT_EQ(lct(Sig({0, 1}, {{0, 0}}), empty), Text(Vec({})));
}

TEST(Calculus, AreasNeedChannels) {
  const auto area = OutcomeOf<const Value&, double, double>(fn::area);
  const auto whole = [](const Value& s) { return Outcome([&](Value& r) { fn::area(r, s); }); };
  const Value no_channels = Value::Signal(RawVector({0, 1}), Value::Matrix(0, 2));
  EXPECT_EQ(whole(no_channels), "CDomain: Size of SIGNAL must be greater than zero.");
  EXPECT_EQ(area(no_channels, 0, 1), "CDimension: Invalid signal size. Unable to calculate area.");
}

TEST(PowerMean, IsTheMeanOfPowersOnAnEquidistantAxis) {
  Value r;
  fn::rms(r, XY({3, 1, 0}, {-4, -4, -4}));  // the axis may descend and be uneven
  EXPECT_TRUE(IsClose(r, Scalar(4), 1e-15));
  fn::rmsdev(r, XY({0, 1}, {1, 2}), XY({0, 2}, {4, 6}));  // the difference is -3 throughout
  EXPECT_TRUE(IsClose(r, Scalar(3), 1e-15));
}

}  // namespace
}  // namespace corvath::math
