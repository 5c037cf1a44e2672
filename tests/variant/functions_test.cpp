#include "foundation/constants.h"
#include "support/values.h"
#include "variant/functions/reductions.h"
#include "variant/operators/arithmetic.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_parts.h"
#include "variant/value/random_values.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

using Unary = void (*)(Value&, const Value&);

constexpr double kInf = std::numeric_limits<double>::infinity();

Complex Eval(Unary f, Complex z) {
  Value result;
  f(result, Value(z));
  return result.GetScalar();
}
void ExpectNear(Complex actual, Complex expected, double tolerance, const char* what) {
  EXPECT_NEAR(actual.real(), expected.real(), tolerance) << what;
  EXPECT_NEAR(actual.imag(), expected.imag(), tolerance) << what;
}

void Round0(Value& r, const Value& x) {
  fn::round(r, x);
}

TEST(Elementwise, EveryFunctionRefusesBooleansAndKeepsShapes) {
  const Unary functions[] = {fn::sin,     fn::cos,     fn::tan,  fn::asin,    fn::acos,  fn::atan,
                             fn::sinh,    fn::cosh,    fn::tanh, fn::asinh,   fn::acosh, fn::atanh,
                             fn::deg2rad, fn::rad2deg, fn::log,  fn::ln,      fn::exp,   fn::sqrt,
                             fn::ceil,    fn::floor,   Round0,   fn::inf2nan, fn::conj,  fn::real,
                             fn::imag,    fn::abs,     fn::arg,  fn::norm};
  std::istringstream names(
      "sine cosine tangens arcsine arccosine arctangens "
      "hyperbolic-sine hyperbolic-cosine hyperbolic-tangens "
      "hyperbolic-arcsine hyperbolic-arccosine hyperbolic-arctangens "
      "degtorad radtodeg log ln exp sqrt ceil floor round infToNaN "
      "conj real imag abs arg norm");
  for (const Unary f : functions) {
    std::string name;
    ASSERT_TRUE(names >> name);
    EXPECT_EQ(Out(f, Value(true)),
              std::string("CType: Invalid type BOOLEAN for ") + name + "-function.");
    EXPECT_EQ(Out(f, Value()), std::string("CType: Input object has invalid datatype") +
                                   (f == fn::exp ? ": UNINITIALIZED" : "."));
    const Complex a(0.3, 0.2), b(1.5, -2.5);
    const Complex fa = Eval(f, a), fb = Eval(f, b);
    EXPECT_EQ(Out(f, Vec({a, b})), Text(Vec({fa, fb}))) << name;
    EXPECT_EQ(Out(f, Mat({{a}, {b}})), Text(Mat({{fa}, {fb}}))) << name;
    EXPECT_EQ(Out(f, Sig({4, 3}, {{a, b}, {b, a}})), Text(Sig({4, 3}, {{fa, fb}, {fb, fa}})))
        << name;
    EXPECT_EQ(Out(f, XY({4, 3}, {a, b})), Text(XY({4, 3}, {fa, fb}))) << name;
  }
}

TEST(Elementwise, ComplexFunctionsSatisfyTheirIdentities) {
  for (double re = -2.25; re < 2.5; re += 0.5)
    for (double im = -2.25; im < 2.5; im += 0.5) {
      const Complex z(re, im);
      const Complex i(0, 1);
      const double tol = 2e-13;  // a few ulp of values up to a hundred
      const Complex s = Eval(fn::sin, z), c = Eval(fn::cos, z);
      ExpectNear(s * s + c * c, 1.0, tol, "sin^2 + cos^2");
      ExpectNear(Eval(fn::tan, z), s / c, tol, "tan");
      const Complex sh = Eval(fn::sinh, z), ch = Eval(fn::cosh, z);
      ExpectNear(ch * ch - sh * sh, 1.0, tol, "cosh^2 - sinh^2");
      ExpectNear(sh, -i * Eval(fn::sin, i * z), tol, "sinh");
      ExpectNear(Eval(fn::tanh, z), sh / ch, tol, "tanh");
      ExpectNear(Eval(fn::exp, Eval(fn::ln, z)), z, tol, "exp(ln)");
      ExpectNear(Eval(fn::exp, z), ch + sh, tol, "exp");
      ExpectNear(Eval(fn::log, z), Eval(fn::ln, z) / std::log(10.0), tol, "log");
      ExpectNear(Eval(fn::sqrt, z) * Eval(fn::sqrt, z), z, tol, "sqrt");
      ExpectNear(Eval(fn::sin, Eval(fn::asin, z)), z, tol, "asin");
      ExpectNear(Eval(fn::cos, Eval(fn::acos, z)), z, tol, "acos");
      ExpectNear(Eval(fn::asin, z) + Eval(fn::acos, z), kPi / 2, tol, "asin + acos");
      ExpectNear(Eval(fn::tan, Eval(fn::atan, z)), z, tol, "atan");
      ExpectNear(Eval(fn::sinh, Eval(fn::asinh, z)), z, tol, "asinh");
      ExpectNear(Eval(fn::cosh, Eval(fn::acosh, z)), z, tol, "acosh");
      ExpectNear(Eval(fn::tanh, Eval(fn::atanh, z)), z, tol, "atanh");
      EXPECT_GE(Eval(fn::sqrt, z).real(), 0.0);  // principal branches
      EXPECT_LE(std::abs(Eval(fn::asin, z).real()), kPi / 2);
      EXPECT_LE(std::abs(Eval(fn::ln, z).imag()), kPi);
      ExpectNear(Eval(fn::abs, z) * Eval(fn::exp, i * Eval(fn::arg, z)), z, tol, "polar form");
      ExpectNear(Eval(fn::norm, z), z * Eval(fn::conj, z), tol, "norm");
      ExpectNear(Eval(fn::real, z) + i * Eval(fn::imag, z), z, 0.0, "parts");
    }
}

TEST(Reductions, ExtremesOfASignalWithoutChannelsAreRefused) {
  const Value none = Value::Signal(RawVector({1}), Value::Matrix(0, 1));
  for (const Unary f : {Unary(fn::min), Unary(fn::max)})
    EXPECT_BEGINS(Out(f, none), "CDimension: Invalid signal size.");
}

TEST(Operators, TheResultMayBeAnOperand) {
  const Value down = Sig({2, 1, 0}, {{1, 2, 3}}), up = Sig({0, 1, 2}, {{10, 20, 30}});
  for (const auto& [x, y] : {std::pair{down, up}, {up, down}}) {
    Value r = x;
    Add(r, r, y);
    EXPECT_EQ(r, Sig({0, 1, 2}, {{13, 22, 31}}));
  }
}

TEST(Operators, ProductsLargerThanAnyMemoryAreRefused) {
  const Value column(Value::Matrix(1 << 14, 1, 0.0)), row(Value::Matrix(1, 1 << 14, 0.0));
  EXPECT_EQ(Out(Multiply, column, row),
            "CDimension: Result of 16384 x 16384 numbers is too large.");
}

TEST(RandomValues, HaveTheShapeAndTheDistribution) {
  boost::random::mt19937 generator(42);
  constexpr std::size_t kCount = 100000;
  const Value shape(Value::Vector(kCount, 0.0));
  // Distribution function at a few points; the share of draws below has a standard error of 0.0016
  // at most, so that 0.008 is five of them.
  const auto normal = [](double x) { return 0.5 * std::erfc(-x / std::sqrt(2.0)); };
  using Distribution = std::function<double(double)>;
  const std::tuple<int, std::vector<Complex>, Distribution> cases[] = {
      {kUniform, {-2, 6}, [](double x) { return (x + 2) / 8; }},
      {kNormal, {1, 2}, [&](double x) { return normal((x - 1) / 2); }},
      {kLognormal,
       {0.5, 0.75},
       [&](double x) { return x > 0 ? normal((std::log(x) - 0.5) / 0.75) : 0; }},
      {kTriangle,
       {-2, 0, 6},
       [](double x) { return x < 0 ? (x + 2) * (x + 2) / 16 : 1 - (6 - x) * (6 - x) / 48; }},
      {kCauchy, {1, 2}, [](double x) { return 0.5 + std::atan((x - 1) / 2) / kPi; }},
      {kExponential, {0.5}, [](double x) { return x > 0 ? 1 - std::exp(-x / 2) : 0; }}};
  for (const auto& [type, p, cdf] : cases) {
    Value draws;
    fn::rand(draws, shape, type, Vec(p), generator);
    ASSERT_TRUE(draws.IsVector() && !draws.IsComplex());
    for (const double x : {-1.5, 0.0, 0.5, 1.0, 2.5, 5.5}) {
      std::size_t below = 0;
      for (const Complex& z : draws.GetVector()) below += z.real() < x;
      EXPECT_NEAR(static_cast<double>(below) / kCount, cdf(x), 0.008) << type << ", " << x;
    }
  }
  Value r;
  fn::rand(r, Sig({3, 4}, {{1, 2}, {3, 4}}), kUniform, Vec({0, 1}), generator);
  EXPECT_TRUE(r.IsSignal());
  EXPECT_EQ(Value(r.GetVector()), Vec({3, 4}));
  EXPECT_NE(r.GetMatrix()(0, 0), r.GetMatrix()(1, 0));
  // The interval has no length in doubles that would not overflow, or hardly any length at all.
  for (const auto& [a, b] : {std::pair{-1.7e308, 1.7e308}, {1.0, 1.0 + 0x1p-52}}) {
    fn::rand(r, Vec(std::vector<Complex>(100)), kUniform, Vec({a, b}), generator);
    for (const Complex& z : r.GetVector()) EXPECT_TRUE(z.real() >= a && z.real() < b) << z;
  }
}

}  // namespace
}  // namespace corvath::math
