#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>

/// Discrete Fourier transforms of complex doubles in place,
///
///     forward  X[k] = sum_j x[j] exp(-2 pi i j k / n)
///     backward x[j] = sum_k X[k] exp(+2 pi i j k / n)
///
/// both unscaled, in one or two dimensions, in O(n log n) time for any length. A transform is a
/// descriptor that is created, committed, used any number of times and freed. Nothing throws; each
/// step returns a status.
namespace corvath::math::dft {

enum Status : std::int32_t {
  kNoError = 0,
  kMemoryError = 1,
  kInvalidLength = 2,     ///< zero, or too large for the memory to address
  kNotCommitted = 3,      ///< computing needs a committed descriptor
  kInvalidDescriptor = 4  ///< a null pointer
};

class Descriptor;

/// `handle` is null after a failure.
Status Create(Descriptor*& handle, std::size_t length) noexcept;
/// Two dimensions, row-major: sums over both indices.
Status Create(Descriptor*& handle, std::size_t rows, std::size_t columns) noexcept;
/// Builds the tables: up to about 10 times the longer length in complex numbers. Those of the last
/// descriptor that was freed serve again, up to 64 MB.
Status Commit(Descriptor* handle) noexcept;
/// @param data  length, or rows x columns numbers
Status Forward(Descriptor* handle, std::complex<double>* data) noexcept;
Status Backward(Descriptor* handle, std::complex<double>* data) noexcept;
/// Sets `handle` to null.
Status Free(Descriptor*& handle) noexcept;

/// The status in words, "Not enough memory." for example.
const char* StatusText(Status status) noexcept;

}  // namespace corvath::math::dft
