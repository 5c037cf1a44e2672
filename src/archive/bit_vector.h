#pragma once

#include "archive/collections.h"

#include <boost/serialization/nvp.hpp>
#include <boost/serialization/split_free.hpp>

#include <cstdint>
#include <vector>

/// A std::vector<bool> is stored without class record, like any collection of numbers, and like one
/// it takes a class id: "num_bits", then the bytes, lowest bit first.
namespace boost::serialization {

template <class Archive>
void save(Archive& ar, const std::vector<bool>& bits, const unsigned int) {
  const std::uint64_t num_bits = bits.size();
  std::vector<unsigned char> bytes((bits.size() + 7) / 8);
  for (std::size_t i = 0; i < bits.size(); ++i)
    if (bits[i]) bytes[i / 8] = static_cast<unsigned char>(bytes[i / 8] | (1u << (i % 8)));
  ar << BOOST_SERIALIZATION_NVP(num_bits) << BOOST_SERIALIZATION_NVP(bytes);
}

/// Bits that the bytes do not hold are clear; bytes beyond the bits are dropped.
template <class Archive>
void load(Archive& ar, std::vector<bool>& bits, const unsigned int) {
  std::uint64_t num_bits = 0;
  std::vector<unsigned char> bytes;
  ar >> BOOST_SERIALIZATION_NVP(num_bits);
  ar.CheckCount(num_bits / 8);
  ar >> BOOST_SERIALIZATION_NVP(bytes);
  bits.assign(num_bits, false);
  for (std::size_t i = 0; i < bits.size() && i / 8 < bytes.size(); ++i)
    bits[i] = ((bytes[i / 8] >> (i % 8)) & 1) != 0;
}

template <class Archive>
void serialize(Archive& ar, std::vector<bool>& bits, const unsigned int version) {
  split_free(ar, bits, version);
}

}  // namespace boost::serialization
