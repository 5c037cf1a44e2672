#pragma once

#include <complex>
#include <cstddef>
#include <memory>
#include <vector>

namespace corvath::math::dft {

/// Forward transform of one length. Lengths without large prime factors go by Stockham's
/// self-sorting form of the mixed radix transform (C. Van Loan, "Computational Frameworks for the
/// Fast Fourier Transform", SIAM 1992, section 1.7), all others by the chirp transform (L. I.
/// Bluestein, "A linear filtering approach to the computation of discrete Fourier transform", IEEE
/// Trans. Audio Electroacoust. 18 (1970), pp. 451-455) over one of these.
class Plan {
 public:
  using Complex = std::complex<double>;

  /// @param length  above 0
  explicit Plan(std::size_t length);

  /// In place; uses buffers of the plan.
  void Forward(Complex* data);
  void Backward(Complex* data);

 private:
  void MixedRadix(Complex* data);
  void Chirp(Complex* data);

  std::size_t length_;
  std::vector<std::size_t> radices_;  ///< their product is the length; empty with a chirp
  std::vector<Complex> roots_;  ///< exp(-2 pi i k / length), or the chirp exp(-pi i k^2 / length)
  std::vector<Complex> buffer_;
  std::unique_ptr<Plan> convolution_;  ///< of the chirp
  std::vector<Complex> spectrum_;  ///< of the conjugate chirp, scaled by the convolution's length
};

}  // namespace corvath::math::dft
