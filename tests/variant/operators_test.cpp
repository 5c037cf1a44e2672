#include "support/values.h"
#include "variant/functions/interpolation.h"
#include "variant/functions/ordering.h"
#include "variant/operators/arithmetic.h"

namespace corvath::math {
namespace {

using namespace support;

const Value kM = Mat({{1, 2}, {3, 4}}), kG = Sig({0, 1}, {{5, 6}, {7, 8}}), kX = XY({0, 1}, {9, 3});

TEST(Operators, ProductsLargerThanAnyMemoryAreRefused) {
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

}  // namespace
}  // namespace corvath::math
