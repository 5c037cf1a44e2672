// Changes portable archives as one who knows their form would: counts, with and without the items
// that they count; class ids, versions and other small integers; single doubles; fields that change
// places. Every third change is one of bytes, by libFuzzer.

#include "archive/integer_code.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <vector>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t capacity);

namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::minstd_rand;

constexpr std::uint16_t kCount = 0xE4E1;  // annotations: checksums of the names
constexpr std::uint16_t kItem = 0x2030;
constexpr std::size_t kWord = 2;

std::size_t Below(Random& random, std::size_t end) {
  return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
}

std::uint16_t WordAt(const Bytes& bytes, std::size_t place) {
  return static_cast<std::uint16_t>(bytes[place] | bytes[place + 1] << 8);
}

/// Places behind the annotation.
std::vector<std::size_t> Find(const Bytes& bytes, std::uint16_t annotation) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i + kWord <= bytes.size(); ++i)
    if (WordAt(bytes, i) == annotation) places.push_back(i + kWord);
  return places;
}

/// The length of the integer at `place`; 0: there is none.
std::size_t IntegerSize(const Bytes& bytes, std::size_t place) {
  for (std::size_t size = kWord; place + size <= bytes.size(); size += kWord)
    if ((WordAt(bytes, place + size - kWord) & 0x8000) == 0) return size;
  return 0;
}

void SetInteger(Bytes& bytes, std::size_t place, std::int64_t value) {
  const std::size_t size = IntegerSize(bytes, place);
  if (size == 0) return;
  char code[corvath::archive::kMaxIntegerBytes];
  const std::size_t new_size = corvath::archive::EncodeSigned(value, code);
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(place);
  const auto behind = bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(size));
  bytes.insert(behind, code, code + new_size);
}

std::int64_t AnyInteger(Random& random, std::int64_t old) {
  const std::int64_t numbers[] = {old + 1,
                                  old - 1,
                                  0,
                                  1,
                                  2,
                                  3,
                                  -1,
                                  17,
                                  1000,
                                  1 << 20,
                                  std::int64_t{1} << 33,
                                  std::numeric_limits<std::int64_t>::max(),
                                  std::numeric_limits<std::int64_t>::min()};
  return numbers[Below(random, std::size(numbers))];
}

void ChangeCount(Bytes& bytes, Random& random) {
  const auto counts = Find(bytes, kCount);
  if (counts.empty()) return;
  const std::size_t place = counts[Below(random, counts.size())];
  if (place + kWord <= bytes.size())
    SetInteger(bytes, place, AnyInteger(random, WordAt(bytes, place)));
}

/// Repeats an item, or takes it out, and keeps the count in front of it right.
void ChangeItems(Bytes& bytes, Random& random) {
  const auto items = Find(bytes, kItem);
  if (items.size() < 2) return;
  const std::size_t i = Below(random, items.size() - 1);
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(items[i] - kWord);
  const Bytes item(begin, bytes.begin() + static_cast<std::ptrdiff_t>(items[i + 1] - kWord));
  const bool repeat = Below(random, 2) == 0;
  if (repeat)
    bytes.insert(begin, item.begin(), item.end());
  else
    bytes.erase(begin, begin + static_cast<std::ptrdiff_t>(item.size()));
  const auto counts = Find(bytes, kCount);
  const auto behind = std::upper_bound(counts.begin(), counts.end(), items[i]);
  if (behind == counts.begin()) return;
  const std::size_t place = *std::prev(behind);
  if (place + kWord <= bytes.size())
    SetInteger(bytes, place, WordAt(bytes, place) + (repeat ? 1 : -1));
}

/// Ids, versions, flags and enumerations are words of small numbers.
void ChangeSmallInteger(Bytes& bytes, Random& random) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i + kWord <= bytes.size(); ++i)
    if (WordAt(bytes, i) < 64 || WordAt(bytes, i) == 0x7FFF) places.push_back(i);
  if (places.empty()) return;
  const std::size_t place = places[Below(random, places.size())];
  SetInteger(bytes, place, AnyInteger(random, WordAt(bytes, place)));
}

void ChangeDouble(Bytes& bytes, Random& random) {
  const auto items = Find(bytes, kItem);
  const double numbers[] = {0.0,
                            -0.0,
                            1.0,
                            -1.0,
                            1e308,
                            -1e308,
                            1e-308,
                            5e-324,
                            HUGE_VAL,
                            -HUGE_VAL,
                            std::numeric_limits<double>::quiet_NaN()};
  const double number = numbers[Below(random, std::size(numbers))];
  const std::size_t place =
      items.empty() ? Below(random, bytes.size()) : items[Below(random, items.size())];
  if (place + sizeof number <= bytes.size()) std::memcpy(&bytes[place], &number, sizeof number);
}

/// Exchanges what stands between two places of one annotation and the next of the same.
void ExchangeFields(Bytes& bytes, Random& random) {
  const std::uint16_t annotation = WordAt(bytes, Below(random, bytes.size() - 1));
  const auto places = Find(bytes, annotation);
  if (places.size() < 3) return;
  const std::size_t i = Below(random, places.size() - 2);
  const auto at = [&](std::size_t k) {
    return bytes.begin() + static_cast<std::ptrdiff_t>(places[k]);
  };
  std::rotate(at(i), at(i + 1), at(i + 2));
}

/// @returns the new size
std::size_t MutateArchive(std::uint8_t* data, std::size_t size, std::size_t capacity,
                          unsigned int seed) {
  Random random(seed);
  if (size < 4 * kWord || Below(random, 3) == 0) return LLVMFuzzerMutate(data, size, capacity);
  Bytes bytes(data, data + size);
  void (*const changes[])(Bytes&, Random&) = {ChangeCount, ChangeItems, ChangeSmallInteger,
                                              ChangeDouble, ExchangeFields};
  changes[Below(random, std::size(changes))](bytes, random);
  if (bytes.empty() || bytes.size() > capacity) return LLVMFuzzerMutate(data, size, capacity);
  std::copy(bytes.begin(), bytes.end(), data);
  return bytes.size();
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t capacity, unsigned int seed) {
  return MutateArchive(data, size, capacity, seed);
}
