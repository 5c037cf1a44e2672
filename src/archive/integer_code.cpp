#include "archive/integer_code.h"

namespace corvath::archive {
namespace {

constexpr int kPayloadBits = 15;
constexpr std::uint64_t kPayload = 0x7fff;
constexpr std::uint64_t kMore = 0x8000;
constexpr std::int64_t kOneWord = 16384;  // -kOneWord .. kOneWord - 1 take a single word

std::size_t PutWord(std::uint64_t word, char* out, std::size_t pos) {
  out[pos] = static_cast<char>(word & 0xff);
  out[pos + 1] = static_cast<char>((word >> 8) & 0xff);
  return pos + 2;
}

}  // namespace

std::size_t EncodeUnsigned(std::uint64_t value, char* out) {
  std::size_t pos = 0;
  for (; value >= static_cast<std::uint64_t>(kOneWord); value >>= kPayloadBits)
    pos = PutWord((value & kPayload) | kMore, out, pos);
  return PutWord(value, out, pos);
}

std::size_t EncodeSigned(std::int64_t value, char* out) {
  if (value >= 0) return EncodeUnsigned(static_cast<std::uint64_t>(value), out);
  std::size_t pos = 0;
  for (; value < -kOneWord; value >>= kPayloadBits)
    pos = PutWord((static_cast<std::uint64_t>(value) & kPayload) | kMore, out, pos);
  return PutWord(static_cast<std::uint64_t>(value) & kPayload, out, pos);
}

IntegerDecoder::Step IntegerDecoder::Add(std::uint16_t word) {
  constexpr int kBitsOfFour = 4 * kPayloadBits;
  const std::uint64_t payload = word & kPayload;
  const bool more = (word & kMore) != 0;
  if (num_bits_ < kBitsOfFour) {
    value_.bits |= payload << num_bits_;
    num_bits_ += kPayloadBits;
    if (more) return Step::kMore;
    value_.negative = ((payload >> (kPayloadBits - 1)) & 1) != 0;
    if (value_.negative) value_.bits |= ~std::uint64_t{0} << num_bits_;
    return Step::kDone;
  }
  // The fifth word: bits 0 to 3 complete the number, bits 5 to 14 must agree on its sign.
  const std::uint64_t sign = payload >> 5;
  if (more || (sign != 0 && sign != 0x3ff)) return Step::kInvalid;
  value_.bits |= payload << kBitsOfFour;
  value_.negative = sign != 0;
  return Step::kDone;
}

}  // namespace corvath::archive
