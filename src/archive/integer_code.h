#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace corvath::archive {

/// The archive's one integer form: 16-bit little-endian words, least significant first. Bits 0 to
/// 14 of a word are payload, bit 15 says that another word follows; the joined payload of k words
/// is a two's complement number of 15 k bits. At most five words.
constexpr std::size_t kMaxIntegerBytes = 10;

/// Writes the form of a number to `out` (kMaxIntegerBytes) and returns the count of bytes.
std::size_t EncodeUnsigned(std::uint64_t value, char* out);
std::size_t EncodeSigned(std::int64_t value, char* out);

/// A decoded number: its low 64 bits in two's complement, and its sign.
struct WideInteger {
  std::uint64_t bits = 0;
  bool negative = false;
};

/// Joins words one by one.
class IntegerDecoder {
 public:
  enum class Step { kMore, kDone, kInvalid };

  /// Takes the next word. kInvalid: a sixth word, or a fifth that 64 bits cannot hold.
  Step Add(std::uint16_t word);
  WideInteger Get() const { return value_; }

 private:
  WideInteger value_;
  int num_bits_ = 0;
};

/// Whether `value` fits Integer; if so it is stored in `out`.
template <class Integer>
bool Narrow(WideInteger value, Integer& out) {
  using Limits = std::numeric_limits<Integer>;
  if constexpr (std::is_unsigned_v<Integer>) {
    if (value.negative || value.bits > static_cast<std::uint64_t>(Limits::max())) return false;
  } else {
    const auto number = static_cast<std::int64_t>(value.bits);
    if (value.negative != (number < 0)) return false;  // beyond 64 bits
    if (number < Limits::min() || number > Limits::max()) return false;
  }
  out = static_cast<Integer>(value.bits);
  return true;
}

}  // namespace corvath::archive
