#include "variant/signals/peaks.h"

#include "support/values.h"

namespace corvath::math {
namespace {

using namespace support;

constexpr double kLow = -std::numeric_limits<double>::infinity();
constexpr std::uint64_t kAll = std::numeric_limits<std::uint64_t>::max();

std::string Found(const Value& x, std::int32_t mode, std::int32_t mind = 0, double minh = kLow,
                  double th = 0, std::uint64_t num = kAll) {
  return Outcome([&](Value& r) { functions::findpeaks(r, x, mode, mind, minh, th, num); });
}

TEST(FindPeaks, TakesTurningPointsByMode) {
  const Value zigzag = Vec({0, 1, 0, 1, 0});
  EXPECT_EQ(Found(zigzag, kPeaks), Text(XY({1, 2, 3}, {1, 0, 1})));
  EXPECT_EQ(Found(zigzag, kMaxPeaks), Text(XY({1, 3}, {1, 1})));
  EXPECT_EQ(Found(zigzag, kMinPeaks), Text(XY({2}, {0})));
  // Of magnitudes {1, 3, 0, 2, 1}.
  EXPECT_EQ(Found(Vec({-1, -3, 0, 2, 1}), kMagPeaks), Text(XY({1, 3}, {3, 2})));
  EXPECT_EQ(Found(Vec({0, {3, 4}, 0}), kMagPeaks), Text(XY({1}, {5})));
  EXPECT_EQ(Found(Vec({0, {3, 4}, 0}), kMaxPeaks), Text(XY({1}, {3})));
  // Abscissae of a signal in its own direction; a plateau turns at its end, ends never do.
  EXPECT_EQ(Found(XY({9, 7, 5, 3, 1}, {5, 1, 1, 4, 4}), kPeaks), Text(XY({5}, {1})));
  EXPECT_EQ(Found(Sig({0, 1, 2, 3, 4}, {{0, 2, 2, 2, 1}}), kMaxPeaks), Text(XY({3}, {2})));
  EXPECT_EQ(Found(Vec({1, 2, 3}), kPeaks), Text(Value()));
  EXPECT_EQ(Found(Vec({1}), kPeaks), Text(Value()));
  EXPECT_EQ(Found(Vec({0, NAN, 0, 1, 0}), kMaxPeaks), Text(XY({3}, {1})));
}

TEST(FindPeaks, Filters) {
  const Value zigzag = Vec({0, 1, 0, 1, 0});
  const Value hills = Vec({0, 1, 0.5, 4, 2, 3, 0});
  const std::int32_t most = std::numeric_limits<std::int32_t>::max();
  EXPECT_EQ(Found(zigzag, kMaxPeaks, 2), Text(XY({1, 3}, {1, 1})));
  EXPECT_EQ(Found(zigzag, kMaxPeaks, 3), Text(XY({1}, {1})));
  EXPECT_EQ(Found(zigzag, kMaxPeaks, most), Text(XY({1}, {1})));
  EXPECT_EQ(Found(zigzag, kMaxPeaks, -most), Text(XY({1, 3}, {1, 1})));
  EXPECT_EQ(Found(hills, kMaxPeaks, 0, 1), Text(XY({3, 5}, {4, 3})));  // not equal to the height
  // Heights differ from the last peak taken, at first from the first sample.
  EXPECT_EQ(Found(hills, kMaxPeaks, 0, kLow, 1.5), Text(XY({3}, {4})));
  EXPECT_EQ(Found(hills, kMaxPeaks, 0, kLow, -1), Text(XY({1, 3, 5}, {1, 4, 3})));
  EXPECT_EQ(Found(hills, kMaxPeaks, 0, kLow, 9), Text(Value()));
  EXPECT_EQ(Found(hills, kPeaks, 0, kLow, 0, 1), Text(XY({1}, {1})));
  EXPECT_EQ(Found(hills, kPeaks, 0, kLow, 0, 0), Text(Value()));
}

TEST(FindPeaks, Refuses) {
  EXPECT_EQ(Found(Value(true), kPeaks), "CType: Invalid type BOOLEAN for findpeaks-function.");
  EXPECT_EQ(Found(Scalar(1), kPeaks), "CType: Invalid type Scalar for findpeaks-function.");
  EXPECT_BEGINS(Found(Sig({0, 1}, {{0, 1}, {0, 1}}), kPeaks), "CType: Number of rows is not 1");
  EXPECT_BEGINS(Found(Mat({{0, 1, 0}}), kPeaks), "CDomain: This row index doesn't exist in this");
  EXPECT_EQ(Found(Vec({}), kPeaks), "CType: Data is empty for findpeaks-function.");
  EXPECT_EQ(Found(Value(), kPeaks).substr(0, 6), "CType:");
}

}  // namespace
}  // namespace corvath::math
