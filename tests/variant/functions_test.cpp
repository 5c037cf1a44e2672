#include "foundation/constants.h"
#include "support/values.h"
#include "variant/functions/reductions.h"
#include "variant/operators/binary_functions.h"
#include "variant/operators/elementwise.h"
#include "variant/value/complex_parts.h"
#include "variant/value/constructors.h"
#include "variant/value/random_values.h"

namespace corvath::math {
namespace {

using namespace support;
namespace fn = functions;

using Unary = void (*)(Value&, const Value&);
using Binary = void (*)(Value&, const Value&, const Value&);

constexpr double kInf = std::numeric_limits<double>::infinity();

Complex Eval(Unary f, Complex z) {
  Value result;
  f(result, Value(z));
  return result.GetScalar();
}
Complex Eval(Binary f, Complex x, Complex y) {
  Value result;
  f(result, Value(x), Value(y));
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

TEST(Elementwise, KnownValuesAndBranchPoints) {
  EXPECT_EQ(Out(fn::sqrt, Scalar(-1)), Text(Scalar(0, 1)));
  EXPECT_EQ(Out(fn::sqrt, Scalar(4)), Text(Scalar(2)));
  EXPECT_NEAR(Eval(fn::log, 100).real(), 2.0, 1e-15);
  ExpectNear(Eval(fn::ln, -1), {0, kPi}, 0.0, "ln(-1)");
  // asin 2 = pi/2 + i ln(2 + sqrt 3), up to the side of the cut.
  const double area = std::log(2 + std::sqrt(3.0));
  EXPECT_NEAR(Eval(fn::asin, 2).real(), kPi / 2, 1e-15);
  EXPECT_NEAR(std::abs(Eval(fn::asin, 2).imag()), area, 1e-15);
  EXPECT_NEAR(Eval(fn::acos, 2).real(), 0.0, 1e-15);
  EXPECT_NEAR(std::abs(Eval(fn::acos, 2).imag()), area, 1e-15);
  ExpectNear(Eval(fn::acosh, 0.5), {0, kPi / 3}, 1e-15, "acosh(1/2)");
  EXPECT_NEAR(Eval(fn::atanh, 2).real(), std::log(3.0) / 2, 1e-15);
  EXPECT_EQ(Eval(fn::atan, {0, 1}), Complex(0, kInf));
  EXPECT_EQ(Eval(fn::atan, {0, -1}), Complex(0, -kInf));
  // Real arguments inside the real domain give real results.
  for (const Unary f : {fn::sin, fn::cos, fn::tan, fn::asin, fn::acos, fn::atan, fn::sinh, fn::cosh,
                        fn::tanh, fn::asinh, fn::atanh, fn::ln, fn::log, fn::exp, fn::sqrt})
    EXPECT_EQ(Eval(f, 0.375).imag(), 0.0);
  ExpectNear(Eval(fn::deg2rad, 180), kPi, 0.0, "deg2rad");
  ExpectNear(Eval(fn::rad2deg, kPi), 180, 0.0, "rad2deg");
  for (const double pole : {kPi / 2, 3 * kPi / 2, -kPi / 2, kPi / 2 + 1e-9})
    EXPECT_EQ(Out(fn::tan, Scalar(pole)), "CDomain: Input to close to Pi/2.0 .") << pole;
  EXPECT_EQ(Out(fn::inf2nan, Vec({{kInf, 1}, {1, -kInf}, {2, 3}})),
            "VECTOR [3]\n (nan,0)\n (nan,0)\n (2,3)\n");
}

TEST(Elementwise, RoundingSendsHalvesAwayFromZero) {
  const std::tuple<double, int, double> cases[] = {
      {2.5, 0, 3},  {-2.5, 0, -3},    {2.4, 0, 2},        {-0.5, 0, -1},  {34, -1, 30},
      {35, -1, 40}, {1.125, 2, 1.13}, {-1.125, 2, -1.13}, {kInf, 0, kInf}};
  for (const auto& [x, digits, rounded] : cases) {
    Value r;
    fn::round(r, Scalar(x, -x), digits);
    EXPECT_DOUBLE_EQ(r.GetScalar().real(), rounded) << x;
    EXPECT_DOUBLE_EQ(r.GetScalar().imag(), -rounded) << x;
  }
  EXPECT_EQ(Out(fn::ceil, Scalar(1.2, -1.2)), Text(Scalar(2, -1)));
  EXPECT_EQ(Out(fn::floor, Scalar(1.2, -1.2)), Text(Scalar(1, -2)));
}

TEST(Elementwise, Sign) {
  EXPECT_EQ(Out(fn::sgn, Scalar(-3)), Text(Scalar(-1)));
  EXPECT_EQ(Out(fn::sgn, Scalar(0)), Text(Scalar(0)));
  EXPECT_EQ(Out(fn::sgn, Scalar(3, 4)), Text(Scalar(0.6, 0.8)));
  EXPECT_BEGINS(Out(fn::sgn, Vec({1})), "CType: Invalid type. Only type SCALAR allowed for");
}

TEST(BinaryFunctions, PowersOfNumbers) {
  EXPECT_BEGINS(Out(fn::pow, Scalar(0), Scalar(-1)), "CComputation: Error: 0^a is not defined");
  EXPECT_EQ(Eval(fn::pow, 0, 0), 1.0);
  EXPECT_EQ(Eval(fn::pow, 0, 0.5), 0.0);
  EXPECT_EQ(Eval(fn::pow, -2, 3), -8.0);  // exactly, by squaring
  EXPECT_EQ(Eval(fn::pow, 2, -2), 0.25);
  EXPECT_EQ(Eval(fn::pow, {0, 1}, 2), Complex(-1, 0));
  EXPECT_EQ(Eval(fn::pow, -1, 1e300), 1.0);  // a whole number beyond any integer type
  const std::tuple<double, double, double> out_of_range[] = {{1e200, 2, HUGE_VAL},
                                                             {-1e200, 3, -HUGE_VAL},
                                                             {10, -600, 0},
                                                             {1e-15, -30, HUGE_VAL},
                                                             {HUGE_VAL, 3, HUGE_VAL}};
  for (const auto& [base, exponent, power] : out_of_range)
    EXPECT_EQ(Text(Value(Eval(fn::pow, base, exponent))), Text(Scalar(power))) << base;
  EXPECT_EQ(Eval(fn::pow, 4, 0.5), 2.0);
  ExpectNear(Eval(fn::pow, -8, 1.0 / 3), {1, std::sqrt(3.0)}, 1e-15, "principal cube root");
  ExpectNear(Eval(fn::pow, {0, 1}, {0, 1}), std::exp(-kPi / 2), 1e-15, "i^i");
  EXPECT_EQ(Eval(fn::mod, -1, 3), 2.0);
  EXPECT_EQ(Eval(fn::mod, 7.5, 2), 1.5);
  EXPECT_EQ(Eval(fn::mod, {5, 7}, {2, 0}), Complex(1, 1));
}

TEST(BinaryFunctions, ModAndPowShareTheirDispatch) {
  const Value v = Vec({3, 4}), m = Mat({{3, 4}}), g = Sig({0, 1}, {{3, 4}}), x = XY({0, 1}, {3, 4});
  const std::tuple<Binary, std::string, double, double, double, double> functions[] = {
      {fn::mod, "mod", 1, 0, 0, 0}, {fn::pow, "pow", 9, 16, 27, 256}};
  for (const auto& [f, name, of_3_2, of_4_2, of_3_3, of_4_4] : functions) {
    const Value two = Scalar(2);
    EXPECT_EQ(Out(f, v, two), Text(Vec({of_3_2, of_4_2})));
    EXPECT_EQ(Out(f, m, two), Text(Mat({{of_3_2, of_4_2}})));
    EXPECT_EQ(Out(f, x, two), Text(XY({0, 1}, {of_3_2, of_4_2})));
    EXPECT_EQ(Out(f, v, v), Text(Vec({of_3_3, of_4_4})));
    EXPECT_EQ(Out(f, m, m), Text(Mat({{of_3_3, of_4_4}})));
    EXPECT_EQ(Out(f, g, g), Text(Sig({0, 1}, {{of_3_3, of_4_4}})));
    EXPECT_EQ(Out(f, g, x), Text(XY({0, 1}, {of_3_3, of_4_4})));
    EXPECT_EQ(Out(f, v, Vec({1})), "CDimension: Vector dimensions do not match.");
    EXPECT_EQ(Out(f, m, Mat({{1}})), "CDimension: Matrix dimensions do not match.");
    EXPECT_EQ(Out(f, g, Sig({0}, {{1}, {2}})), "CDimension: Number of channels does not match!");
    EXPECT_EQ(Out(f, Value(), two), "CType: Input object has invalid datatype.");
    EXPECT_EQ(Out(f, Sig({0, 1}, {{{1, 1}, 1}}), Sig({0, 2}, {{1, 1}})),
              "CComputation: " + name +
                  ": Computational error during equalization of timelines: Real input object "
                  "expected.");
  }
  EXPECT_EQ(Out(fn::pow, Sig({0}, {{0}}), Sig({0}, {{-1}})),
            "CComputation: pow: Error: 0^a is not defined for a < 0.");
  EXPECT_BEGINS(Out(fn::mod, Scalar(1), v), "CType: Invalid type. Cannot divide by 'VECTOR'. 2nd");
  EXPECT_BEGINS(Out(fn::mod, v, Value(true)), "CType: Invalid type. Cannot divide by 'BOOLEAN'.");
  EXPECT_BEGINS(Out(fn::pow, v, m), "CType: Invalid type. Cannot perform pow('VECTOR','MATRIX').");
  EXPECT_EQ(Out(fn::pow, v, Value(true)), "CType: Invalid type BOOLEAN for function pow.");
}

TEST(BinaryFunctions, TimesIsElementwise) {
  const Value s = Scalar(2), v = Vec({3, 4}), m = Mat({{3, 4}, {5, 6}}),
              g = Sig({0, 1}, {{1, 2}, {3, 4}}), x = XY({0, 1}, {3, 4});
  const std::tuple<Value, Value, std::string> cases[] = {
      {s, s, Text(Scalar(4))},
      {s, v, Text(Vec({6, 8}))},
      {x, s, Text(XY({0, 1}, {6, 8}))},
      {v, v, Text(Vec({9, 16}))},
      {m, m, Text(Mat({{9, 16}, {25, 36}}))},
      {g, m, Text(Sig({0, 1}, {{3, 8}, {15, 24}}))},
      {m, g, Text(Sig({0, 1}, {{13, 16}, {29, 36}}))},  // the algebraic product g * m
      {g, g, Text(Sig({0, 1}, {{1, 4}, {9, 16}}))},
      {x, XY({1, 0}, {10, 20}), Text(XY({0, 1}, {60, 40}))},
      {v, Vec({1}), "CDimension: Vector dimensions do not match."},
      {x, m, "CDimension: Matrix dimensions do not match."},
      {g, x, "CDimension: Number of channels does not match!"},
      {v, m, "CType: Elementwise multiplication for VECTOR and MATRIX is an undefined operation."},
      {v, x, "CType: Elementwise multiplication for VECTOR and XYDATA is an undefined operation."},
      {g, v, "CType: Elementwise multiplication for SIGNAL and VECTOR is an undefined operation."},
      {Value(true), s, "CType: Invalid type BOOLEAN for elementwise multiplication."},
      {s, Value(true), "CType: Invalid type BOOLEAN for elementwise multiplication."},
      {s, Value(), "CType: Input object has invalid datatype."},
  };
  for (const auto& [left, right, outcome] : cases) EXPECT_EQ(Out(fn::times, left, right), outcome);
}

TEST(ComplexParts, ArcTangentOfTwoArguments) {
  const Binary atan2 = fn::atan2;
  const Unary single = fn::atan2;
  EXPECT_EQ(Out(atan2, Vec({1, -1}), Vec({0, -1})), Text(Vec({kPi / 2, -3 * kPi / 4})));
  EXPECT_EQ(Out(atan2, Mat({{0}}), Mat({{-1}})), Text(Mat({{kPi}})));
  const Value s = Scalar(1), x = XY({1, 2}, {1, 2});
  EXPECT_BEGINS(Out(atan2, s, Value()), "CType: Cannot handle UNINITIALIZED arguments in");
  EXPECT_EQ(Out(atan2, s, x), "CType: Invalid data kind 'XYDATA' for atan2(y,x)-function.");
  EXPECT_BEGINS(Out(atan2, Value(true), x), "CType: Invalid data kind 'BOOLEAN' for");
  EXPECT_BEGINS(Out(atan2, s, Scalar(1, 1)), "CType: Complex number arguments not supported for");
  EXPECT_BEGINS(Out(atan2, s, Vec({1})), "CType: Arguments must be of same kind for");
  EXPECT_BEGINS(Out(atan2, Vec({1, 2}), Vec({1})), "CDimension: Arguments must be of same");

  EXPECT_EQ(Out(single, Scalar(1, 1)), Text(Scalar(kPi / 4)));
  EXPECT_EQ(Out(single, x), Text(XY({1, 2}, {kPi / 4, kPi / 4})));
  EXPECT_EQ(Out(single, Value(true)), "CType: Invalid type BOOLEAN for atan2(yx)-function.");
  EXPECT_BEGINS(Out(single, Vec({1})), "CType: Invalid data kind 'VECTOR' for single argument");
  EXPECT_BEGINS(Out(single, XY({1}, {{1, 1}})), "CType: XYDATA argument based on complex numbers");
}

TEST(ComplexParts, ComplexNumbersFromParts) {
  const Value x = XY({0, 1}, {1, 2});
  EXPECT_EQ(Out(fn::cplx, Scalar(1), Scalar(2)), Text(Scalar(1, 2)));
  EXPECT_EQ(Out(fn::cplx, Vec({1, 2}), Vec({0, 3})), Text(Vec({1, {2, 3}})));
  EXPECT_EQ(Out(fn::cplx, Mat({{1}}), Mat({{3}})), Text(Mat({{{1, 3}}})));
  EXPECT_EQ(Out(fn::cplx, x, Sig({1, 0}, {{5, 6}})), Text(XY({0, 1}, {{1, 6}, {2, 5}})));
  EXPECT_BEGINS(Out(fn::cplx, Scalar(1), Value(true)), "CType: Invalid type BOOLEAN for");
  EXPECT_EQ(Out(fn::cplx, Scalar(1), Vec({1})),
            "CCompatibility: Cannot put 'SCALAR' and 'VECTOR' in one complex number: Incompatible "
            "types.");
  EXPECT_EQ(Out(fn::cplx, Scalar(1), Scalar(1, 1)), "CDomain: Imaginary part has to be zero.");
  EXPECT_BEGINS(Out(fn::cplx, Vec({1}), Vec({})), "CDimension: Both vectors must have the same");
  EXPECT_BEGINS(Out(fn::cplx, Mat({{1}}), Mat({{1, 2}})), "CDimension: Both matrices must have");
  EXPECT_BEGINS(Out(fn::cplx, x, Sig({0}, {{1}, {2}})), "CDimension: Number of channels does not");
  EXPECT_BEGINS(Out(fn::cplx, XY({0}, {1}), XY({1}, {1})), "CDomain: cplx: Computational error");
}

TEST(ComplexParts, PolarFormAndBack) {
  const double root8 = std::sqrt(8.0);
  EXPECT_EQ(Out(fn::cart2pol, Scalar(-1)), Text(Vec({1, kPi})));
  EXPECT_EQ(Out(fn::cart2pol, Vec({{0, 2}, 3})), Text(Mat({{2, 3}, {kPi / 2, 0}})));
  EXPECT_EQ(Out(fn::cart2pol, Mat({{{2, 2}}, {1}})), Text(Mat({{root8}, {kPi / 4}, {1}, {0}})));
  EXPECT_EQ(Out(fn::cart2pol, XY({5, 6}, {1, -1})), Text(Sig({5, 6}, {{1, 1}, {0, kPi}})));
  EXPECT_EQ(Out(fn::cart2pol, Value(true)), "CType: Invalid type BOOLEAN for cart2pol-function.");

  const Value z = Mat({{{1, 2}, {-3, 1}}, {{0, -1}, 5}});
  Value back;
  fn::cart2pol(back, z);
  fn::pol2cart(back, back);
  EXPECT_TRUE(IsClose(back, z, 1e-14)) << Text(back);
  fn::pol2cart(back, Vec({2, 0}));
  EXPECT_EQ(back, Scalar(2));
  fn::pol2cart(back, Vec({2, 0, 3, 0}));
  EXPECT_EQ(back, Vec({2, 3}));
  fn::pol2cart(back, Sig({0, 1}, {{2, 3}, {0, 0}}));
  EXPECT_EQ(back, Sig({0, 1}, {{2, 3}}));
  for (const Value& v : {Value(true), Scalar(1), XY({0}, {1})})
    EXPECT_EQ(Out(fn::pol2cart, v),
              "CType: Invalid type " + v.GetKindName() + " for pol2cart-function.");
  EXPECT_EQ(Out(fn::pol2cart, Vec({{1, 1}, 2})), "CType: Real input object expected.");
  EXPECT_EQ(Out(fn::pol2cart, Vec({1})), "CDimension: Size of vector must be even.");
  EXPECT_EQ(Out(fn::pol2cart, Mat({{1}})), "CDimension: Number of rows must be even.");
}

TEST(Reductions, Extremes) {
  const Unary min = fn::min, max = fn::max;
  EXPECT_EQ(Out(min, Vec({3, -1, 2})), Text(Scalar(-1)));
  EXPECT_EQ(Out(max, Mat({{3, -1}, {7, 2}})), Text(Scalar(7)));
  EXPECT_EQ(Out(min, Sig({10, 20, 30}, {{2, 1, 1}, {0, 5, 9}})), Text(Mat({{20, 1}, {10, 0}})));
  EXPECT_EQ(Out(max, XY({10, 20, 30}, {2, 4, 4})), Text(Vec({20, 4})));
  const std::tuple<Unary, std::string, std::string> functions[] = {{min, "min", "minimum"},
                                                                   {max, "max", "maximum"}};
  for (const auto& [f, name, word] : functions) {
    EXPECT_EQ(Out(f, Scalar(4)), Text(Scalar(4)));
    EXPECT_EQ(Out(f, Value(true)), "CType: Invalid type BOOLEAN for " + name + "-function.");
    EXPECT_EQ(Out(f, Scalar(0, 1)), "CType: Input must be real for " + name + "-function.");
    EXPECT_EQ(Out(f, Vec({})),
              "CDimension: Invalid vector size. No elements to find " + word + ".");
    EXPECT_BEGINS(Out(f, Mat({})), "CDimension: Invalid matrix size.");
    EXPECT_BEGINS(Out(f, Value::Signal(RawVector({1}), Value::Matrix(0, 1))),
                  "CDimension: Invalid signal size.");
    EXPECT_EQ(Out(f, Value()), "CType: Input object has invalid datatype.");
  }
  const auto list = OutcomeOf<const std::vector<Value>&>(fn::max);
  EXPECT_EQ(list({}), Text(Value()));
  EXPECT_EQ(list({Vec({1, 5})}), Text(Scalar(5)));
  EXPECT_EQ(list({Scalar(1), Scalar(3), Scalar(2)}), Text(Scalar(3)));
  EXPECT_EQ(list({Scalar(1), Scalar(3, 1)}), "CType: At least one input object is not real.");
  EXPECT_BEGINS(list({Scalar(1), Value(true)}), "CType: At least one input object of unsupported");
}

TEST(Reductions, SumsMeansAndNorms) {
  const Value v = Vec({1, {2, 1}, 6}), m = Mat({{1, 2, 6}, {0, 0, 3}}),
              g = Sig({0, 1, 2}, {{1, 2, 6}, {0, 0, 3}}), x = XY({0, 1, 2}, {1, 2, 6});
  EXPECT_EQ(Out(fn::sum, v), Text(Scalar(9, 1)));
  for (const Value& rows : {m, g}) {
    EXPECT_EQ(Out(fn::sum, rows), Text(Vec({9, 3})));
    EXPECT_EQ(Out(fn::mean, rows), Text(Vec({3, 1})));
    EXPECT_EQ(Out(fn::stddev, rows), Text(Vec({std::sqrt(7.0), std::sqrt(3.0)})));
    EXPECT_EQ(Out(fn::euklidnorm, rows), Text(Scalar(std::sqrt(50.0))));
  }
  EXPECT_EQ(Out(fn::sum, x), Text(Scalar(9)));
  EXPECT_EQ(Out(fn::mean, x), Text(Scalar(3)));
  EXPECT_EQ(Out(fn::stddev, x), Text(Scalar(std::sqrt(7.0))));
  EXPECT_EQ(Out(fn::mean, Scalar(5, 1)), Text(Scalar(5, 1)));
  EXPECT_EQ(Out(fn::stddev, Scalar(5)), Text(Scalar(0)));
  EXPECT_EQ(Out(fn::stddev, Vec({5})), Text(Scalar(0)));
  EXPECT_EQ(Out(fn::stddev, Vec({{0, 1}, {0, -1}})), Text(Scalar(std::sqrt(2.0))));

  const auto norm = OutcomeOf<const Value&, std::uint64_t>(fn::norm);
  EXPECT_EQ(norm(Vec({{3, 4}, -2}), 1), Text(Scalar(7)));
  Value cubic;
  fn::norm(cubic, Vec({3, 4, 5}), 3);  // 3^3 + 4^3 + 5^3 = 6^3
  EXPECT_NEAR(cubic.GetScalar().real(), 6.0, 2e-15);
  EXPECT_EQ(norm(Scalar(3, 4), 7), Text(Scalar(5)));
  const std::string boolean = "CType: Invalid type BOOLEAN for ";
  EXPECT_EQ(Out(fn::sum, Value(true)), boolean + "sum-function.");
  EXPECT_EQ(Out(fn::mean, Value(true)), boolean + "mean-function.");
  EXPECT_EQ(Out(fn::stddev, Value(true)), boolean + "stddev-function.");
  EXPECT_EQ(Out(fn::euklidnorm, Value(true)), boolean + "euklidean norm-function.");
  EXPECT_EQ(norm(Value(true), 2), boolean + "n-th norm-function.");
  EXPECT_EQ(Out(fn::sum, Value()), "CType: Input object has invalid datatype.");
}

TEST(Constructors, SignalsFromParts) {
  const auto signal = OutcomeOf(fn::signal);
  const Value t = Vec({0, 1}), x = XY({0, 1}, {1, 2});
  EXPECT_EQ(signal({x}), Text(Sig({0, 1}, {{1, 2}})));
  EXPECT_EQ(signal({t, Vec({3, 4}), x}), Text(Sig({0, 1}, {{3, 4}, {1, 2}})));
  EXPECT_EQ(signal({x, Vec({3, 4})}), Text(Sig({0, 1}, {{1, 2}, {3, 4}})));
  EXPECT_EQ(signal({x, Vec({3, {4, 1}}), Sig({5, 6}, {{7, 8}, {9, 0}})}),
            Text(Sig({0, 1}, {{1, 2}, {3, {4, 1}}, {7, 8}, {9, 0}})));
  EXPECT_EQ(signal({Vec({}), Vec({})}), Text(Value()));
  EXPECT_EQ(signal({t}), "CType: Input object of unsupported type VECTOR");
  EXPECT_BEGINS(signal({Scalar(1), t}), "CType: First object of wrong type. VECTOR or SIGNAL");
  EXPECT_BEGINS(signal({t, Mat({{1, 2}})}), "CType: At least one input object of unsupported");
  EXPECT_EQ(signal({t, Vec({1})}), "CDimension: addChannels: dimensions do not match.");
  EXPECT_EQ(signal({Vec({{0, 1}}), Vec({1})}), "CType: Timeline of signal may not be complex.");

  const Unary single = fn::xydata;
  const Binary pair = fn::xydata;
  EXPECT_EQ(Out(pair, t, Vec({5, {6, 1}})), Text(XY({0, 1}, {5, {6, 1}})));
  EXPECT_EQ(Out(pair, Vec({}), Vec({})), Text(Value()));
  EXPECT_EQ(Out(pair, t, Vec({1})), "CDimension: xydata: Dimensions do not match!");
  EXPECT_BEGINS(Out(pair, t, x), "CType: xydata: Input objects have invalid datatype. Type");
  EXPECT_EQ(Out(single, Mat({{0, 1}, {1, 2}})), Text(x));
  EXPECT_EQ(Out(single, Sig({0, 1}, {{1, 2}})), Text(x));
  EXPECT_EQ(Out(single, x), Text(x));
  EXPECT_EQ(Out(single, Mat({{1}})), "CDimension: xydata: Wrong number of channels for xy-data!");
  EXPECT_BEGINS(Out(single, t), "CType: xydata: Input object has invalid datatype. Type MATRIX");
}

TEST(Constructors, LinspaceExtractAndSort) {
  const auto linspace = OutcomeOf(fn::linspace);
  EXPECT_EQ(linspace(0, 1, 5), Text(Vec({0, 0.25, 0.5, 0.75, 1})));
  EXPECT_EQ(linspace(2, 2, 2), Text(Vec({2, 2})));
  EXPECT_EQ(linspace(1, 0, 5), "CDomain: linspace: First value must be smaller than last value.");
  EXPECT_EQ(linspace(0, 1, 1), "CDomain: linspace: Output must contain at least 2 elements.");
  EXPECT_BEGINS(linspace(0, 1, 1000000000000000000), "CDimension: Result of 1000000000000000000");

  const Value m = Mat({{1, 2}, {3, 4}}), g = Sig({0, 1}, {{5, 6}, {7, 8}});
  EXPECT_EQ(Out(fn::extract, m, Scalar(1)), Text(Vec({3, 4})));
  EXPECT_EQ(Out(fn::extract, g, Scalar(0)), Text(Vec({0, 1})));
  EXPECT_EQ(Out(fn::extract, g, Vec({2, 0, 2.4})), Text(Mat({{7, 8}, {0, 1}, {7, 8}})));
  for (const double bad : {-1.0, 3.0, 1e300, std::nan("")})
    EXPECT_BEGINS(Out(fn::extract, g, Scalar(bad)), "CDomain: This row index doesn't exist in");
  EXPECT_BEGINS(Out(fn::extract, Vec({1}), Scalar(0)), "CType: Input object of invalid type.");
  EXPECT_EQ(Out(fn::extract, m, m), "CType: Input object has invalid datatype.");

  EXPECT_EQ(Out(fn::sort, Vec({3, std::nan(""), -1, 2})), Text(Vec({-1, 2, 3, std::nan("")})));
  EXPECT_EQ(Out(fn::sort, Sig({2, 0, 1}, {{1, 2, 3}, {4, 5, 6}})),
            Text(Sig({0, 1, 2}, {{2, 3, 1}, {5, 6, 4}})));
  EXPECT_EQ(Out(fn::sort, Value(true)), Text(Value(true)));
  EXPECT_BEGINS(Out(fn::sort, Vec({{1, 1}})), "CType: Sort operation not defined for vector of");
  EXPECT_EQ(Out(fn::sort, m), "CType: Sort operation not defined for matrix type");
  EXPECT_EQ(Out(fn::sort, Value()), "CType: Input object has invalid datatype.");
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

TEST(RandomValues, RefuseBadParameters) {
  boost::random::mt19937 generator;
  const auto rand = [&](int type, const Value& p, const Value& x = Scalar(0)) {
    return Outcome([&](Value& r) { fn::rand(r, x, type, p, generator); });
  };
  EXPECT_BEGINS(rand(kUniform, Vec({1, 1})), "CDomain: Second parameter must be equal or greater");
  EXPECT_EQ(rand(kNormal, Vec({1, 0})), "CDomain: Second parameter must not be zero.");
  EXPECT_EQ(rand(kLognormal, Vec({1, 0})), "CDomain: Second parameter must not be zero.");
  EXPECT_EQ(rand(kTriangle, Vec({1, 3, 2})), "CDomain: Parameter must ascend from first to last.");
  EXPECT_EQ(rand(kTriangle, Vec({2, 2, 2})), Text(Scalar(2)));
  EXPECT_EQ(rand(kExponential, Vec({0})), "CDomain: Parameter must be greater than zero.");
  EXPECT_EQ(rand(kExponential, Vec({1, 2})), "CCompatibility: 1 real Parameters expected.");
  EXPECT_EQ(rand(kCauchy, Vec({1, {2, 1}})), "CCompatibility: 2 real Parameters expected.");
  EXPECT_EQ(rand(kTriangle, Vec({1})), "CCompatibility: 3 real Parameters expected.");
  EXPECT_EQ(rand(6, Vec({1})), "CType: Illegal distribution type.");
  EXPECT_EQ(rand(kUniform, Scalar(1)), "CType: Vector of Parameters expected.");
  EXPECT_BEGINS(rand(kUniform, Vec({0, 1}), Value(true)), "CType: Illegal type. Only non BOOLEAN");
  EXPECT_EQ(rand(kUniform, Vec({0, 1}), Value()), "CType: Illegal input type.");
}

}  // namespace
}  // namespace corvath::math
