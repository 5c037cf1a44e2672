#include "support/values.h"
#include "variant/functions/interpolation.h"
#include "variant/functions/ordering.h"
#include "variant/operators/arithmetic.h"

namespace corvath::math {
namespace {

using namespace support;

using Operator = void (*)(Value&, const Value&, const Value&);
using Cell = std::vector<std::string>;

/// One operand of each kind, in the order of the kinds' numbers. V fits M and G; X has one channel.
const Value kU, kB(true), kS = Scalar(2, 1), kV = Vec({10, {20, 1}}), kM = Mat({{1, 2}, {3, 4}}),
                          kG = Sig({0, 1}, {{5, 6}, {7, 8}}), kX = XY({0, 1}, {9, 3});
const std::vector<Value> kOperands = {kU, kB, kS, kV, kM, kG, kX};

void ExpectTable(Operator op, const char* sign, const std::vector<Cell>& table) {
  for (std::size_t i = 0; i < kOperands.size(); ++i)
    for (std::size_t j = 0; j < kOperands.size(); ++j)
      EXPECT_EQ(Out(op, kOperands[i], kOperands[j]), table[i][j])
          << kOperands[i].GetKindName() << " " << sign << " " << kOperands[j].GetKindName();
}

void ExpectSumTable(Operator op, const std::string& sign, Complex (*f)(Complex, Complex)) {
  const std::string boolean = "CType: Invalid type BOOLEAN for operation " + sign + ".";
  const std::string invalid =
      "CType: Input object has invalid datatype for operation " + sign + ".";
  const std::string other = "CType: Type of second Input object not compatible with first.";
  const std::string channels = "CDimension: Number of channels does not match!";
  const std::string dims = "CDimension: Matrix dimensions do not match.";
  const std::string signal_dims = "CDimension: Matrix " +
                                  std::string(sign == "+" ? "and Signal " : "") +
                                  "dimensions do not match.";
  const Complex s(2, 1), i20(20, 1);
  const auto sv = Vec({f(s, 10), f(s, i20)}), vs = Vec({f(10, s), f(i20, s)});
  const auto sm = Mat({{f(s, 1), f(s, 2)}, {f(s, 3), f(s, 4)}});
  const auto ms = Mat({{f(1, s), f(2, s)}, {f(3, s), f(4, s)}});
  const auto sg = Sig({0, 1}, {{f(s, 5), f(s, 6)}, {f(s, 7), f(s, 8)}});
  const auto gs = Sig({0, 1}, {{f(5, s), f(6, s)}, {f(7, s), f(8, s)}});
  const auto vv = Vec({f(10, 10), f(i20, i20)});
  const auto vg = Sig({0, 1}, {{f(10, 5), f(10, 6)}, {f(i20, 7), f(i20, 8)}});
  const auto gv = Sig({0, 1}, {{f(5, 10), f(6, 10)}, {f(7, i20), f(8, i20)}});
  const auto mm = Mat({{f(1, 1), f(2, 2)}, {f(3, 3), f(4, 4)}});
  const auto mg = Sig({0, 1}, {{f(1, 5), f(2, 6)}, {f(3, 7), f(4, 8)}});
  const auto gm = Sig({0, 1}, {{f(5, 1), f(6, 2)}, {f(7, 3), f(8, 4)}});
  const auto gg = Sig({0, 1}, {{f(5, 5), f(6, 6)}, {f(7, 7), f(8, 8)}});
  const auto xx = XY({0, 1}, {f(9, 9), f(3, 3)});
  const Cell all_boolean(7, boolean);
  ExpectTable(op, sign.c_str(),
              {{invalid, boolean, invalid, invalid, invalid, invalid, invalid},
               all_boolean,
               {other, boolean, Text(Value(f(s, s))), Text(sv), Text(sm), Text(sg),
                Text(XY({0, 1}, {f(s, 9), f(s, 3)}))},
               {other, boolean, Text(vs), Text(vv), other, Text(vg), other},
               {other, boolean, Text(ms), other, Text(mm), Text(mg), dims},
               {other, boolean, Text(gs), Text(gv), Text(gm), Text(gg), channels},
               {other, boolean, Text(XY({0, 1}, {f(9, s), f(3, s)})), other, signal_dims, channels,
                Text(xx)}});
}

TEST(Operators, SumAndDifferenceFollowTheTable) {
  ExpectSumTable(Add, "+", [](Complex a, Complex b) { return a + b; });
  ExpectSumTable(Subtract, "-", [](Complex a, Complex b) { return a - b; });
}

TEST(Operators, ProductFollowsTheTable) {
  const std::string boolean = "CType: Invalid type BOOLEAN for operation: *.";
  const std::string invalid = "CType: Input object has invalid datatype.";
  const std::string dims = "CDimension: Dimensions do not match.";
  const std::string channels = "CDimension: Number of channels does not match!";
  const auto undefined = [](const std::string& text) {
    return "CType: " + text + " is an undefined operation.";
  };
  const Cell all_boolean(7, boolean);
  const Cell all_invalid = {invalid, boolean, invalid, invalid, invalid, invalid, invalid};
  const auto sv = Text(Vec({{20, 10}, {39, 22}}));
  const auto sm = Text(Mat({{{2, 1}, {4, 2}}, {{6, 3}, {8, 4}}}));
  const auto sg = Text(Sig({0, 1}, {{{10, 5}, {12, 6}}, {{14, 7}, {16, 8}}}));
  const auto sx = Text(XY({0, 1}, {{18, 9}, {6, 3}}));
  ExpectTable(
      Multiply, "*",
      {all_invalid,
       all_boolean,
       {invalid, boolean, Text(Scalar(3, 4)), sv, sm, sg, sx},
       // 10^2 + (20 + i)^2; {10, 20 + i} M
       {invalid, boolean, sv, Text(Scalar(499, 40)), Text(Vec({{70, 3}, {100, 4}})),
        undefined("SIGNAL * VECTOR"), undefined("XYDATA * VECTOR")},
       {invalid, boolean, sm, Text(Vec({{50, 2}, {110, 4}})), Text(Mat({{7, 10}, {15, 22}})),
        Text(Sig({0, 1}, {{19, 22}, {43, 50}})), dims},
       {invalid, boolean, sg, undefined("VECTOR * SIGNAL"), Text(Sig({0, 1}, {{23, 34}, {31, 46}})),
        Text(Sig({0, 1}, {{25, 36}, {49, 64}})), channels},
       {invalid, boolean, sx, undefined("VECTOR * XYDATA"), Text(XY({0, 1}, {18, 30})), channels,
        Text(XY({0, 1}, {81, 9}))}});
}

TEST(Operators, QuotientFollowsTheTable) {
  const std::string boolean = "CType: Invalid type BOOLEAN for operation: /.";
  const std::string invalid = "CType: Input object has invalid datatype.";
  const std::string channels = "CDimension: Inputs need same number of channels";
  const auto by = [](const std::string& kind) {
    return "CType: Invalid type. Cannot divide by '" + kind +
           "'. 2nd parameter has to be of same type or of type SCALAR, XYDATA or SIGNAL.";
  };
  const auto undefined = [](const std::string& kinds) {
    return "CVariant: No Operator '/' definied for " + kinds + ".";
  };
  // 1 / (2 + i) = 0.4 - 0.2i
  const auto part = [](double x) { return Complex(x * 2 / 5, -x / 5); };
  const auto over = [](double x) { return Complex(2 / x, 1 / x); };
  ExpectTable(
      Divide, "/",
      {{invalid, boolean, invalid, by("VECTOR"), by("MATRIX"), invalid, invalid},
       Cell(7, boolean),
       {by("UNINITIALIZED"), boolean, Text(Scalar(1)), by("VECTOR"), by("MATRIX"),
        Text(Sig({0, 1}, {{over(5), over(6)}, {over(7), over(8)}})),
        Text(XY({0, 1}, {over(9), over(3)}))},
       {by("UNINITIALIZED"), boolean, Text(Vec({part(10), {41.0 / 5, -18.0 / 5}})),
        Text(Vec({1, 1})), by("MATRIX"), undefined("VECTOR / SIGNAL"),
        undefined("VECTOR / XYDATA")},
       {by("UNINITIALIZED"), boolean, Text(Mat({{part(1), part(2)}, {part(3), part(4)}})),
        by("VECTOR"), Text(Mat({{1, 1}, {1, 1}})), undefined("MATRIX / SIGNAL"),
        undefined("MATRIX / XYDATA")},
       {by("UNINITIALIZED"), boolean, Text(Sig({0, 1}, {{part(5), part(6)}, {part(7), part(8)}})),
        by("VECTOR"), by("MATRIX"), Text(Sig({0, 1}, {{1, 1}, {1, 1}})), channels},
       {by("UNINITIALIZED"), boolean, Text(XY({0, 1}, {part(9), part(3)})), by("VECTOR"),
        by("MATRIX"), channels, Text(XY({0, 1}, {1, 1}))}});
}

TEST(Operators, SizesMustFit) {
  const Value v3 = Vec({1, 2, 3}), m23 = Mat({{1, 2, 3}, {4, 5, 6}}), m12 = Mat({{1, 2}}),
              m21 = Mat({{1}, {2}});
  const std::tuple<Operator, Value, Value, std::string> cases[] = {
      {Add, kV, v3, "CDimension: Vector dimensions do not match."},
      {Subtract, v3, kG, "CDimension: Vector dimension does not match dimension of Signal."},
      {Add, kG, v3, "CDimension: Vector dimension does not match dimension of Signal."},
      {Add, kM, m23, "CDimension: Matrix dimensions do not match."},
      {Add, m23, kG, "CDimension: Matrix dimensions do not match."},
      {Add, kG, m23, "CDimension: Matrix and Signal dimensions do not match."},
      {Subtract, kG, m23, "CDimension: Matrix dimensions do not match."},
      {Add, m12, kX, Text(XY({0, 1}, {10, 5}))},
      {Subtract, kX, m12, Text(XY({0, 1}, {8, 1}))},
      {Multiply, kV, v3, "CDimension: Vector dimensions do not match."},
      {Multiply, v3, kM, "CDimension: Vector and Matrix dimensions do not match."},
      {Multiply, kM, v3, "CDimension: Matrix and Vector dimensions do not match."},
      {Multiply, m23, kM, "CDimension: Matrix dimensions do not match."},
      {Multiply, m23, kG, "CDimension: Dimensions do not match."},
      {Multiply, m21, kX, "CDimension: Dimensions do not match."},  // two rows for an XYDATA
      {Multiply, Mat({{3}}), kX, Text(XY({0, 1}, {27, 9}))},
      {Multiply, m12, kG, Text(Sig({0, 1}, {{19, 22}}))},
      {Multiply, kG, m23, "CDimension: Dimensions do not match."},
      {Divide, kV, v3, "CDimension: Vector dimensions do not match."},
      {Divide, kM, m23, "CDimension: Matrix dimensions do not match."},
      {Add, Vec({}), Vec({}), Text(Vec({}))},
      {Multiply, Vec({}), Vec({}), Text(Scalar(0))},
  };
  for (const auto& [op, left, right, outcome] : cases) EXPECT_EQ(Out(op, left, right), outcome);
  // An outer product larger than any memory.
  const Value column(Value::Matrix(1 << 14, 1, 0.0)), row(Value::Matrix(1, 1 << 14, 0.0));
  EXPECT_EQ(Out(Multiply, column, row),
            "CDimension: Result of 16384 x 16384 numbers is too large.");
}

TEST(Operators, DivisionByZeroGivesNaNInBothParts) {
  const double nan = std::nan("");
  const double inf = std::numeric_limits<double>::infinity();
  for (const auto& [a, b] :
       {std::pair<Complex, Complex>{1, 0}, {0, 0}, {1, {nan, 1}}, {1, {1, nan}}}) {
    Value q;
    Divide(q, Value(a), Value(b));
    EXPECT_TRUE(std::isnan(q.GetScalar().real()) && std::isnan(q.GetScalar().imag()));
    EXPECT_TRUE(q.IsComplex());
    EXPECT_EQ(Outcome([&](Value&) { Less(q, Scalar(1)); }),
              "CVariant: Compare operation not allowed for Variants with complex values.");
  }
  Value q;
  Divide(q, Scalar(1), Scalar(inf));
  EXPECT_EQ(q, Scalar(0));
  Divide(q, Scalar(3, 4), Scalar(0, 2));
  EXPECT_EQ(q, Scalar(2, -1.5));
  Divide(q, Scalar(1e300, 1e300), Scalar(1e300, 1e300));  // naive squares overflow
  EXPECT_EQ(q, Scalar(1));
}

TEST(Operators, SignalsMeetOnTheUnionOfTheirTimelines) {
  // y = 2t on {0, 1} and y = 3t + 1 on {0.5, 2}: the lines go on beyond their points.
  const Value a = XY({0, 1}, {0, 2}), b = Sig({0.5, 2}, {{2.5, 7}});
  Value r;
  Add(r, a, b);
  EXPECT_EQ(r, XY({0, 0.5, 1, 2}, {1, 3.5, 6, 11}));
  Subtract(r, b, a);
  EXPECT_EQ(r, XY({0, 0.5, 1, 2}, {1, 1.5, 2, 3}));
  Multiply(r, a, b);
  EXPECT_EQ(r, XY({0, 0.5, 1, 2}, {0, 2.5, 8, 28}));
  Divide(r, b, a);
  EXPECT_TRUE(std::isnan(r.GetMatrix()(0, 0).real()));
  EXPECT_EQ(r.GetMatrix()(0, 3), 1.75);

  // A descending operand ascends in the result, whichever it is; aliasing is fine.
  const Value down = Sig({2, 1, 0}, {{1, 2, 3}}), up = Sig({0, 1, 2}, {{10, 20, 30}});
  for (const auto& [x, y] : {std::pair{down, up}, {up, down}}) {
    r = x;
    Add(r, r, y);
    EXPECT_EQ(r, Sig({0, 1, 2}, {{13, 22, 31}}));
  }
  Add(r, down, down);
  EXPECT_EQ(r, Sig({0, 1, 2}, {{6, 4, 2}}));
  // Timelines that agree within the zero tolerance stay as they stand.
  Add(r, Sig({0, 1}, {{1, {2, 5}}}), Sig({0, 1 + 1e-9}, {{1, 2}}));
  EXPECT_EQ(r, Sig({0, 1}, {{2, {4, 5}}}));
  // Complex signals on different timelines cannot be interpolated.
  const Value complex = Sig({0, 2}, {{1, {2, 5}}});
  for (const auto& [op, sign] : {std::pair<Operator, std::string>{Add, "+"},
                                 {Subtract, "-"},
                                 {Multiply, "*"},
                                 {Divide, "/"}})
    EXPECT_EQ(Out(op, complex, a),
              "CComputation: " + sign +
                  ": Computational error during equalization of timelines: Real input object "
                  "expected.");
}

TEST(Operators, OrderingFollowsTheTable) {
  const struct {
    bool (*relation)(const Value&, const Value&);
    std::string sign;
    bool less, equal, greater;  // what it says of 1, 2 and 3 against 2
  } relations[] = {{Less, "<", true, false, false},
                   {LessEqual, "<=", true, true, false},
                   {Greater, ">", false, false, true},
                   {GreaterEqual, ">=", false, true, true}};
  for (const auto& r : relations) {
    const auto outcome = [&](const Value& a, const Value& b) {
      return Outcome([&](Value& v) { v = Value(r.relation(a, b)); });
    };
    EXPECT_EQ(r.relation(Scalar(1), Scalar(2)), r.less);
    EXPECT_EQ(r.relation(Scalar(2), Scalar(2)), r.equal);
    EXPECT_EQ(r.relation(Scalar(3), Scalar(2)), r.greater);
    EXPECT_FALSE(r.relation(Scalar(std::nan("")), Scalar(2)));
    EXPECT_EQ(r.relation(Value(false), Value(true)), r.less);
    EXPECT_EQ(r.relation(Value(true), Value(true)), r.equal);
    EXPECT_EQ(r.relation(Vec({1, 0}), Vec({2, 2})), r.less);
    EXPECT_EQ(r.relation(Mat({{1, 3}}), Mat({{2, 2}})), false);
    EXPECT_TRUE(r.relation(Vec({}), Vec({})));

    const std::string complex =
        "CVariant: Compare operation not allowed for Variants with complex values.";
    const std::string no_signals =
        "CVariant: No operator " + r.sign + " for signal and xydata implemented yet.";
    EXPECT_EQ(outcome(Vec({{1, 1}}), kG), complex);
    EXPECT_EQ(outcome(Scalar(1), Scalar(1, 1)), complex);
    EXPECT_EQ(outcome(kG, kG), no_signals);
    EXPECT_EQ(outcome(Scalar(1), kX), no_signals);
    EXPECT_BEGINS(outcome(Scalar(1), Vec({1})), "CCompatibility: Cannot perform 'SCALAR' -");
    EXPECT_EQ(outcome(Vec({1}), Vec({1, 2})), "CDimension: Vector dimensions do not match.");
    EXPECT_EQ(outcome(kM, Mat({{1}})), "CDimension: Matrix dimensions do not match.");
    EXPECT_EQ(outcome(Value(), Value()), "CType: Input object has invalid datatype.");
  }
}

TEST(Operators, LogicTakesBooleans) {
  const Value yes(true), no(false);
  for (const bool a : {false, true})
    for (const bool b : {false, true}) {
      EXPECT_EQ(Out(And, Value(a), Value(b)), Text(Value(a && b)));
      EXPECT_EQ(Out(Or, Value(a), Value(b)), Text(Value(a || b)));
    }
  EXPECT_EQ(Out(Not, yes), Text(no));
  const std::string only = "CType: Invalid type. Only BOOLEAN allowed for operation: ";
  EXPECT_EQ(Out(And, yes, kS), only + "and.");
  EXPECT_EQ(Out(Or, kS, yes), only + "or.");
  EXPECT_EQ(Out(Not, kS), only + "not.");
}

}  // namespace
}  // namespace corvath::math
