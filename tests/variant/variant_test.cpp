#include "variant/value/variant.h"

#include "foundation/math_exception.h"
#include "support/values.h"

#include <type_traits>

namespace corvath::math {
namespace {

using namespace support;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// One value of every kind, in the order of the kinds' numbers.
std::vector<Value> EveryKind() {
  return {Value(),
          Value(true),
          Scalar(2.5),
          Vec({1, 2, 3}),
          Mat({{1, 2}, {3, 4}, {5, 6}}),
          Sig({0, 1, 2}, {{1, 2, 3}, {4, 5, 6}}),
          XY({0, 1}, {7, 8})};
}

TEST(Variant, TellsKindNameAndSizesOfEveryKind) {
  const char* const names[] = {"UNINITIALIZED", "BOOLEAN", "SCALAR", "VECTOR",
                               "MATRIX",        "SIGNAL",  "XYDATA"};
  const std::size_t sizes[][3] = {{0, 0, 0}, {1, 1, 1}, {1, 1, 1}, {3, 1, 3},
                                  {3, 2, 6}, {2, 3, 6}, {1, 2, 2}};
  const std::vector<Value> values = EveryKind();
  for (std::size_t i = 0; i < values.size(); ++i) {
    const Value& v = values[i];
    EXPECT_EQ(v.GetKind(), static_cast<int>(i) - 1);
    EXPECT_EQ(v.GetKindName(), names[i]);
    std::wstring wide;
    v.GetKindName(wide);
    EXPECT_EQ(utils::ToUtf8(wide), names[i]);
    const bool is[] = {v.IsUninitialized(), v.IsBoolean(), v.IsScalar(), v.IsVector(),
                       v.IsMatrix(),        v.IsSignal(),  v.IsXYData()};
    for (std::size_t kind = 0; kind < 7; ++kind) EXPECT_EQ(is[kind], kind == i) << names[i];
    EXPECT_FALSE(v.IsComplex());
    EXPECT_TRUE(v.IsOrdered());
    if (i == 0) continue;
    EXPECT_EQ(v.Size1(), sizes[i][0]) << names[i];
    EXPECT_EQ(v.Size2(), sizes[i][1]) << names[i];
    EXPECT_EQ(v.Size(), sizes[i][2]) << names[i];
  }
  EXPECT_EQ(Text(Value()), "UNINITIALIZEDUninitialized variant");
  EXPECT_ERROR(CTypeException, "Invalid type.", Value().Size1());
  EXPECT_ERROR(CTypeException, "Invalid type.", Value().Size2());
  EXPECT_ERROR(CTypeException, "Invalid type.", Value().Size());
  EXPECT_ERROR(CTypeException, "Input object has invalid datatype.",
               Value::GetKindName(static_cast<Value::Kind>(6)));
}

TEST(Variant, CopiesAreDeepAndMovesLeaveNothing) {
  for (const Value& original : EveryKind()) {
    Value copy(original);
    EXPECT_EQ(copy, original);
    if (original.IsVector() || original.HasTimeline()) {
      EXPECT_NE(&copy.GetVector()(0), &original.GetVector()(0));
    }
    if (original.HasTimeline()) {
      EXPECT_NE(&copy.GetMatrix()(0, 0), &original.GetMatrix()(0, 0));
    }
    for (Value target : EveryKind()) {  // each kind over each other
      target = original;
      EXPECT_EQ(target, original);
      target = std::move(copy);
      EXPECT_EQ(target, original);
      EXPECT_TRUE(copy.IsUninitialized());
      copy = std::move(target);
      EXPECT_TRUE(target.IsUninitialized());
    }
    Value& self = copy;
    copy = self;
    EXPECT_EQ(copy, original);
  }
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<Value>);
  EXPECT_FALSE((std::is_constructible_v<Value, const wchar_t*>));  // would become true
}

TEST(Variant, AssignmentKeepsStorageThatFits) {
  const std::vector<Value> values = {
      Vec({1, 2, 3}),
      Vec({3, {1, 1}, 5}),  // complex, not ordered
      Mat({{1, 2}, {3, 4}}),
      Mat({{1, {2, 1}}, {3, 4}}),
      Sig({0, 1}, {{1, 2}}),
      XY({4, 2}, {1, {2, 1}}),  // the same sizes as above
      Sig({0, 1, 2, 3}, {{1, 2, 3, 4}}),
      Mat({{1, 2, 3, 4}}),
      Vec({1, 2, 3, 4}),
  };
  for (const Value& from : values)
    for (Value to : values) {
      const bool fits = to.Size1() == from.Size1() && to.Size2() == from.Size2() &&
                        to.IsVector() == from.IsVector() && to.IsMatrix() == from.IsMatrix();
      const void* const storage = to.IsVector() ? &to.GetVector()(0) : &to.GetMatrix()(0, 0);
      to = from;
      EXPECT_EQ(to, from);
      EXPECT_EQ(to.GetKind(), from.GetKind());
      EXPECT_EQ(to.IsComplex(), from.IsComplex());
      EXPECT_EQ(to.IsOrdered(), from.IsOrdered());
      const void* const now = to.IsVector() ? &to.GetVector()(0) : &to.GetMatrix()(0, 0);
      if (fits) {
        EXPECT_EQ(now, storage) << Text(from);
      }
    }
}

TEST(Variant, FlagsSeeTheLastOfManyAndTheRootOfEpsilon) {
  EXPECT_FALSE(Vec({1, {2, -0.0}}).IsComplex());
  std::vector<Complex> long_one(3000, 1.0);
  long_one.back() = {1.0, 1.0};
  EXPECT_TRUE(Vec(long_one).IsComplex());
  // A scalar judges the square of its imaginary part by 2^-52.
  EXPECT_TRUE(Scalar(1, 0x1p-26).IsComplex());
  EXPECT_FALSE(Scalar(1, 0x1p-27).IsComplex());
}

TEST(Variant, SignalsCheckTimelineAndSizes) {
  EXPECT_TRUE(Sig({}, {{1, 2}}).IsUninitialized());
  EXPECT_TRUE(XY({}, {1}).IsUninitialized());
  EXPECT_EQ(Sig({0, 1}, {{1, 2}, {3, 4}}).Size1(), 2u);
  EXPECT_ERROR(CTypeException, "Timeline of signal may not be complex.",
               Sig({{0, 1}, 1}, {{1, 2}}));
  EXPECT_ERROR(CDimensionException,
               "Timeline of signal and data-matrix have to be of same dimension.",
               Sig({0, 1}, {{1, 2, 3}}));
  EXPECT_ERROR(CTypeException, "Timeline of XYDATA may not be complex.", XY({{0, kNaN}}, {1}));
  EXPECT_ERROR(CDimensionException, "X- and Y-data have to be of same dimension.", XY({0, 1}, {1}));
}

TEST(Variant, AccessorsRefuseEveryOtherKind) {
  for (const Value& v : EveryKind()) {
    const std::string refusal = "Input object not of type ";
    EXPECT_MESSAGE(v.IsBoolean() ? "" : refusal + "BOOLEAN.", v.GetBoolean());
    EXPECT_MESSAGE(v.IsScalar() ? "" : refusal + "SCALAR.", v.GetScalar());
    EXPECT_MESSAGE(v.IsVector() || v.HasTimeline() ? "" : refusal + "VECTOR.", v.GetVector());
    EXPECT_MESSAGE(v.IsMatrix() || v.HasTimeline() ? "" : refusal + "MATRIX.", v.GetMatrix());
  }
  Value signal = Sig({0, 1}, {{1, 2}});
  const Complex* const storage = &signal.GetMatrix()(0, 0);
  Value::Matrix data(1, 1);
  signal.TakeMatrix(data);
  EXPECT_EQ(&data(0, 0), storage);
  EXPECT_EQ(signal.Size(), 0u);
  EXPECT_TRUE(signal.IsSignal());
  Value::Vector timeline;
  signal.TakeVector(timeline);
  EXPECT_EQ(timeline.size(), 2u);
  EXPECT_EQ(signal.GetVector().size(), 0u);
}

TEST(Variant, SettersChangeTheFormAndKeepFlags) {
  Value v = Vec({{1, 1}, 3, 2});
  v.SetKind(Value::VECTOR);  // no change of form
  EXPECT_EQ(v.Size(), 3u);
  v.SetKind(Value::SIGNAL);
  EXPECT_TRUE(v.IsSignal());
  EXPECT_EQ(v.Size(), 0u);
  EXPECT_TRUE(v.IsComplex());
  EXPECT_FALSE(v.IsOrdered());
  v.SetKind(Value::MATRIX);
  EXPECT_TRUE(v.IsComplex());
  v.SetKind(17);
  EXPECT_TRUE(v.IsUninitialized());
  v.SetComplex(true);
  EXPECT_FALSE(v.IsComplex());

  Value signal = Sig({0, 1}, {{1, 2}});
  signal.SetKind(Value::XYDATA);
  EXPECT_EQ(signal, XY({0, 1}, {1, 2}));
  Value::Vector timeline = RawVector({5, 3});
  signal.SetVector(timeline);
  EXPECT_EQ(signal, XY({5, 3}, {1, 2}));
  EXPECT_EQ(timeline(1), 1.0);  // swapped out
  Value::Matrix data = RawMatrix({{{1, 1}, 2}});
  signal.SetMatrix(data);
  EXPECT_EQ(signal, XY({5, 3}, {{1, 1}, 2}));
  EXPECT_TRUE(signal.IsComplex());
  signal.SetScalar(3.0);
  EXPECT_EQ(signal, Scalar(3));
  signal.SetBoolean(true);
  EXPECT_EQ(signal, Value(true));
  signal.SetMatrix(data);
  EXPECT_EQ(signal, Mat({{1, 2}}));
}

TEST(Variant, AddsItsOwnChannelsAndKeepsThemWhenOthersAreRefused) {
  Value s = Sig({0, 1}, {{1, 2}, {{3, 1}, 4}});
  s.addChannels(s);
  EXPECT_EQ(s, Sig({0, 1}, {{1, 2}, {{3, 1}, 4}, {1, 2}, {{3, 1}, 4}}));
  EXPECT_TRUE(s.IsComplex());
  Value no_channels = Value::Signal(RawVector({0, 1}), Value::Matrix(0, 2));
  no_channels.addChannels(Vec({3, 4}));
  EXPECT_EQ(no_channels, Sig({0, 1}, {{3, 4}}));
  EXPECT_THROW(no_channels.addChannels(Vec({1})), CDimensionException);
  EXPECT_EQ(no_channels.Size1(), 1u);
}

TEST(Variant, EqualityIsExact) {
  const std::vector<Value> values = EveryKind();
  for (std::size_t i = 0; i < values.size(); ++i)
    for (std::size_t j = 0; j < values.size(); ++j) {
      EXPECT_EQ(values[i] == values[j], i == j) << i << ", " << j;
      EXPECT_EQ(IsClose(values[i], values[j]), i == j) << i << ", " << j;
    }
}

}  // namespace
}  // namespace corvath::math
