#pragma once

#include <complex>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace corvath::math::dft {

using Complex = std::complex<double>;

/// Without the checks for infinities of the operator.
inline Complex Product(const Complex& a, const Complex& b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

/// Whether to keep a buffer costs more memory than to allocate it anew costs time.
inline bool IsLarge(const std::vector<Complex>& buffer) {
  return buffer.size() > 65536;
}

/// exp(-2 pi i k / n) for any k < n: products of two of some thousand roots, which costs a
/// rounding.
class RootTable {
 public:
  explicit RootTable(std::uint64_t n);

  Complex operator()(std::uint64_t k) const { return Product(high_[k / kLow], low_[k % kLow]); }

 private:
  static constexpr std::uint64_t kLow = 1024;

  std::vector<Complex> low_;
  std::vector<Complex> high_;
};

/// Forward transform of a length without large prime factors, by Stockham's self-sorting form of
/// the mixed radix transform: C. Van Loan, "Computational Frameworks for the Fast Fourier Transform",
/// SIAM 1992, section 1.7. Threads may share it.
class Stockham {
 public:
  /// Whether no prime factor of the length is above 31: each costs its own length in products per
  /// number.
  static bool Takes(std::size_t length);

  /// @param length  one that it takes, above 0
  explicit Stockham(std::size_t length);

  std::size_t GetLength() const { return length_; }
  /// In memory.
  std::size_t CountNumbers() const { return roots_.size(); }

  /// Transforms `batch` sequences, number k of sequence b at data[k * batch + b]. Both arrays have
  /// length * batch numbers, and are written to.
  /// @returns the one of the two that holds the result
  Complex* Forward(Complex* data, Complex* buffer, std::size_t batch = 1) const;

 private:
  std::size_t length_;
  std::vector<std::size_t> radices_;  ///< their product is the length
  std::vector<Complex> roots_;        ///< exp(-2 pi i k / length)
};

}  // namespace corvath::math::dft
