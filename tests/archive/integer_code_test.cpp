#include "archive/integer_code.h"

#include "support/testing.h"

#include <cstring>

namespace corvath::archive {
namespace {

std::string Hex(const char* bytes, std::size_t size) {
  std::string text;
  for (std::size_t i = 0; i < size; ++i) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(bytes[i]));
    text += digits;
  }
  return text;
}

IntegerDecoder::Step Decode(const std::vector<std::uint16_t>& words, WideInteger& out) {
  IntegerDecoder decoder;
  auto step = IntegerDecoder::Step::kMore;
  for (const auto word : words) step = decoder.Add(word);
  out = decoder.Get();
  return step;
}

TEST(IntegerCode, WritesTheBytesOfTheFormat) {
  const std::pair<std::int64_t, const char*> cases[] = {
      {0, "0000"},
      {300, "2C01"},
      {17, "1100"},
      {16383, "FF3F"},
      {16384, "00C00000"},
      {-1, "FF7F"},
      {-16384, "0040"},
      {-16385, "FFBFFF7F"},
      {-32768, "0080FF7F"},
      {32767, "FFFF0000"},
      {1 << 30, "008000800100"},
  };
  for (const auto& [value, bytes] : cases) {
    char out[kMaxIntegerBytes];
    EXPECT_EQ(Hex(out, EncodeSigned(value, out)), bytes) << value;
  }
  char out[kMaxIntegerBytes];
  EXPECT_EQ(EncodeUnsigned(std::numeric_limits<std::uint64_t>::max(), out), 10u);
}

TEST(IntegerCode, ReadsBackEveryPowerOfTwoAndItsNeighbours) {
  for (int shift = 0; shift < 64; ++shift)
    for (const std::uint64_t offset : {~std::uint64_t{0}, std::uint64_t{0}, std::uint64_t{1}}) {
      const std::uint64_t value = (std::uint64_t{1} << shift) + offset;
      for (const bool as_signed : {false, true}) {
        char bytes[kMaxIntegerBytes];
        const auto size = as_signed ? EncodeSigned(static_cast<std::int64_t>(value), bytes)
                                    : EncodeUnsigned(value, bytes);
        IntegerDecoder decoder;
        auto step = IntegerDecoder::Step::kMore;
        for (std::size_t i = 0; i < size; i += 2) {
          ASSERT_EQ(step, IntegerDecoder::Step::kMore);
          step = decoder.Add(
              static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[i]) |
                                         static_cast<unsigned char>(bytes[i + 1]) << 8));
        }
        ASSERT_EQ(step, IntegerDecoder::Step::kDone);
        EXPECT_EQ(decoder.Get().bits, value);
        EXPECT_EQ(decoder.Get().negative, as_signed && static_cast<std::int64_t>(value) < 0);
      }
    }
}

TEST(IntegerCode, RefusesWhatTheTargetOr64BitsCannotHold) {
  WideInteger value;
  using Step = IntegerDecoder::Step;
  EXPECT_EQ(Decode({0xffff, 0xffff, 0xffff, 0xffff, 0x0020}, value), Step::kInvalid);  // mixed top
  EXPECT_EQ(Decode({0x8000, 0x8000, 0x8000, 0x8000, 0x8000}, value), Step::kInvalid);  // a sixth
  ASSERT_EQ(Decode({0xffff, 0xffff, 0xffff, 0xffff, 0x000f}, value), Step::kDone);     // 2^64 - 1
  std::uint64_t big = 0;
  EXPECT_TRUE(Narrow(value, big));
  EXPECT_EQ(big, std::numeric_limits<std::uint64_t>::max());
  int number = 0;
  std::int64_t wide = 0;
  EXPECT_FALSE(Narrow(value, number));
  EXPECT_FALSE(Narrow(value, wide));
  ASSERT_EQ(Decode({0x7fff}, value), Step::kDone);  // -1
  unsigned char small = 0;
  EXPECT_FALSE(Narrow(value, small));
  EXPECT_TRUE(Narrow(value, number));
  EXPECT_EQ(number, -1);
  ASSERT_EQ(Decode({300}, value), Step::kDone);
  EXPECT_FALSE(Narrow(value, small));
}

}  // namespace
}  // namespace corvath::archive
