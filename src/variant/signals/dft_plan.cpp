#include "variant/signals/dft_plan.h"

#include "foundation/constants.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace corvath::math::dft {

namespace {

using Complex = Plan::Complex;

/// Largest prime factor that the mixed radix transform takes: each costs its own length in products
/// per number.
constexpr std::size_t kLargestRadix = 31;

/// Without the checks for infinities of the operator.
inline Complex Product(const Complex& a, const Complex& b) {
  return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}
inline Complex TimesMinusI(const Complex& a) {
  return {a.imag(), -a.real()};
}

/// exp(-2 pi i k / n) for k <= n, from an angle of at most pi/4.
Complex Root(std::uint64_t k, std::uint64_t n) {
  const std::uint64_t octant = 8 * k / n;
  const std::uint64_t rest = 8 * k % n;
  const bool odd = octant % 2 == 1;  // then counted back from the next axis
  const double angle =
      kPi / 4.0 * static_cast<double>(odd ? n - rest : rest) / static_cast<double>(n);
  double c = std::cos(angle);
  double s = std::sin(angle);
  if (odd) std::swap(c, s);
  switch (octant / 2 % 4) {
    case 0:
      return {c, -s};
    case 1:
      return {-s, -c};
    case 2:
      return {-c, s};
    default:
      return {s, c};
  }
}

/// Many roots of one length: a product of two of some thousand of them, which costs a rounding.
class RootTable {
 public:
  explicit RootTable(std::uint64_t n) {
    for (std::uint64_t k = 0; k < kLow && k < n; ++k) low_.push_back(Root(k, n));
    for (std::uint64_t k = 0; k < n; k += kLow) high_.push_back(Root(k, n));
  }

  Complex operator()(std::uint64_t k) const { return Product(high_[k / kLow], low_[k % kLow]); }

 private:
  static constexpr std::uint64_t kLow = 1024;

  std::vector<Complex> low_;
  std::vector<Complex> high_;
};

/// All roots of one length; of lengths divisible by 8 all but an eighth by symmetry.
std::vector<Complex> Roots(std::size_t n) {
  std::vector<Complex> roots(n);
  const std::size_t quarter = n / 4;
  const bool symmetric = n % 8 == 0;
  const std::size_t computed = symmetric ? n / 8 + 1 : n;
  const RootTable table(n);
  for (std::size_t k = 0; k < computed; ++k) roots[k] = table(k);
  for (std::size_t k = computed; k < n; ++k)
    roots[k] = k < quarter ? Complex(-roots[quarter - k].imag(), -roots[quarter - k].real())
                           : TimesMinusI(roots[k - quarter]);
  return roots;
}

/// Factors 4, then 2, 3, 5, ... Empty if a prime factor is above kLargestRadix.
std::vector<std::size_t> Radices(std::size_t n) {
  std::vector<std::size_t> radices;
  for (const std::size_t radix : {4u, 2u, 3u, 5u, 7u, 11u, 13u, 17u, 19u, 23u, 29u, 31u})
    for (; n % radix == 0; n /= radix) radices.push_back(radix);
  static_assert(kLargestRadix == 31, "the list ends there");
  return n == 1 ? radices : std::vector<std::size_t>();
}

/// The least number of the form 2^a 3^b 5^c that is not below `n`.
std::size_t SmoothLength(std::size_t n) {
  std::size_t best = 1;
  while (best < n) best *= 2;
  for (std::size_t five = 1; five < best; five *= 5)
    for (std::size_t odd = five; odd < best; odd *= 3) {
      std::size_t length = odd;
      while (length < n) length *= 2;
      best = std::min(best, length);
    }
  return best;
}

/// One stage of Stockham's transform. The numbers are an array [radix][blocks][stride] at `x`; the
/// radix' transform over the first index goes to [blocks][radix][stride] at `y`, times the root of
/// block * (index of the radix) / (radix * blocks).
struct Stage {
  const Complex* x;
  Complex* y;
  std::size_t blocks;
  std::size_t stride;
  const Complex* roots;  ///< of the whole length, which is radix * blocks * stride
};

void StageOf2(const Stage& stage) {
  const std::size_t step = stage.blocks * stage.stride;
  for (std::size_t p = 0; p < stage.blocks; ++p) {
    const Complex w1 = stage.roots[p * stage.stride];
    const Complex* const x = stage.x + p * stage.stride;
    Complex* const y = stage.y + 2 * p * stage.stride;
    for (std::size_t q = 0; q < stage.stride; ++q) {
      const Complex a = x[q];
      const Complex b = x[q + step];
      y[q] = a + b;
      y[q + stage.stride] = Product(a - b, w1);
    }
  }
}

void StageOf3(const Stage& stage) {
  constexpr double kHalfRoot3 = 0.86602540378443864676;
  const std::size_t step = stage.blocks * stage.stride;
  for (std::size_t p = 0; p < stage.blocks; ++p) {
    const Complex w1 = stage.roots[p * stage.stride];
    const Complex w2 = stage.roots[2 * p * stage.stride];
    const Complex* const x = stage.x + p * stage.stride;
    Complex* const y = stage.y + 3 * p * stage.stride;
    for (std::size_t q = 0; q < stage.stride; ++q) {
      const Complex a = x[q];
      const Complex sum = x[q + step] + x[q + 2 * step];
      const Complex turned = TimesMinusI(kHalfRoot3 * (x[q + step] - x[q + 2 * step]));
      const Complex middle = a - 0.5 * sum;
      y[q] = a + sum;
      y[q + stage.stride] = Product(middle + turned, w1);
      y[q + 2 * stage.stride] = Product(middle - turned, w2);
    }
  }
}

void StageOf4(const Stage& stage) {
  const std::size_t step = stage.blocks * stage.stride;
  for (std::size_t p = 0; p < stage.blocks; ++p) {
    const Complex w1 = stage.roots[p * stage.stride];
    const Complex w2 = stage.roots[2 * p * stage.stride];
    const Complex w3 = stage.roots[3 * p * stage.stride];
    const Complex* const x = stage.x + p * stage.stride;
    Complex* const y = stage.y + 4 * p * stage.stride;
    for (std::size_t q = 0; q < stage.stride; ++q) {
      const Complex a = x[q] + x[q + 2 * step];
      const Complex b = x[q] - x[q + 2 * step];
      const Complex c = x[q + step] + x[q + 3 * step];
      const Complex d = TimesMinusI(x[q + step] - x[q + 3 * step]);
      y[q] = a + c;
      y[q + stage.stride] = Product(b + d, w1);
      y[q + 2 * stage.stride] = Product(a - c, w2);
      y[q + 3 * stage.stride] = Product(b - d, w3);
    }
  }
}

void StageOf5(const Stage& stage) {
  // Cosines and sines of 72 and 144 degrees.
  constexpr double kC1 = 0.30901699437494742410;
  constexpr double kC2 = -0.80901699437494742410;
  constexpr double kS1 = 0.95105651629515357212;
  constexpr double kS2 = 0.58778525229247312917;
  const std::size_t step = stage.blocks * stage.stride;
  for (std::size_t p = 0; p < stage.blocks; ++p) {
    const Complex w1 = stage.roots[p * stage.stride];
    const Complex w2 = stage.roots[2 * p * stage.stride];
    const Complex w3 = stage.roots[3 * p * stage.stride];
    const Complex w4 = stage.roots[4 * p * stage.stride];
    const Complex* const x = stage.x + p * stage.stride;
    Complex* const y = stage.y + 5 * p * stage.stride;
    for (std::size_t q = 0; q < stage.stride; ++q) {
      const Complex a = x[q];
      const Complex sum1 = x[q + step] + x[q + 4 * step];
      const Complex sum2 = x[q + 2 * step] + x[q + 3 * step];
      const Complex difference1 = x[q + step] - x[q + 4 * step];
      const Complex difference2 = x[q + 2 * step] - x[q + 3 * step];
      const Complex middle1 = a + kC1 * sum1 + kC2 * sum2;
      const Complex middle2 = a + kC2 * sum1 + kC1 * sum2;
      const Complex turned1 = TimesMinusI(kS1 * difference1 + kS2 * difference2);
      const Complex turned2 = TimesMinusI(kS2 * difference1 - kS1 * difference2);
      y[q] = a + sum1 + sum2;
      y[q + stage.stride] = Product(middle1 + turned1, w1);
      y[q + 2 * stage.stride] = Product(middle2 + turned2, w2);
      y[q + 3 * stage.stride] = Product(middle2 - turned2, w3);
      y[q + 4 * stage.stride] = Product(middle1 - turned1, w4);
    }
  }
}

void StageOfAny(const Stage& stage, std::size_t radix) {
  const std::size_t step = stage.blocks * stage.stride;
  Complex numbers[kLargestRadix];
  for (std::size_t p = 0; p < stage.blocks; ++p) {
    const Complex* const x = stage.x + p * stage.stride;
    Complex* const y = stage.y + radix * p * stage.stride;
    for (std::size_t q = 0; q < stage.stride; ++q) {
      for (std::size_t j = 0; j < radix; ++j) numbers[j] = x[q + j * step];
      for (std::size_t k = 0; k < radix; ++k) {
        Complex sum = numbers[0];
        for (std::size_t j = 1; j < radix; ++j)
          sum += Product(numbers[j], stage.roots[j * k % radix * step]);
        y[q + k * stage.stride] = Product(sum, stage.roots[k * p * stage.stride]);
      }
    }
  }
}

void Compute(const Stage& stage, std::size_t radix) {
  switch (radix) {
    case 2:
      return StageOf2(stage);
    case 3:
      return StageOf3(stage);
    case 4:
      return StageOf4(stage);
    case 5:
      return StageOf5(stage);
    default:
      return StageOfAny(stage, radix);
  }
}

}  // namespace

Plan::Plan(std::size_t length) : length_(length), radices_(Radices(length)) {
  if (length_ == 1) return;
  if (!radices_.empty()) {
    roots_ = Roots(length_);
    buffer_.resize(length_);
    return;
  }

  // j k = (j^2 + k^2 - (k - j)^2) / 2 makes the transform a convolution with the conjugate chirp.
  roots_.resize(length_);
  const std::uint64_t period = 2 * static_cast<std::uint64_t>(length_);
  const RootTable table(period);
  std::uint64_t square = 0;  // k^2 modulo the chirp's period, exactly
  for (std::size_t k = 0; k < length_; ++k) {
    roots_[k] = table(square);
    square += 2 * k + 1;  // less than two periods
    if (square >= period) square -= period;
  }
  const std::size_t padded = SmoothLength(2 * length_ - 1);
  convolution_ = std::make_unique<Plan>(padded);
  const double scale = 1.0 / static_cast<double>(padded);
  spectrum_.assign(padded, 0.0);
  spectrum_[0] = scale * std::conj(roots_[0]);
  for (std::size_t k = 1; k < length_; ++k)
    spectrum_[k] = spectrum_[padded - k] = scale * std::conj(roots_[k]);
  convolution_->Forward(spectrum_.data());
  buffer_.resize(padded);
}

void Plan::Forward(Complex* data) {
  if (length_ == 1) return;
  if (radices_.empty())
    Chirp(data);
  else
    MixedRadix(data);
}

/// The sums with the other sign are those of the indices counted backwards.
void Plan::Backward(Complex* data) {
  Forward(data);
  std::reverse(data + 1, data + length_);
}

void Plan::MixedRadix(Complex* data) {
  Stage stage{data, buffer_.data(), length_, 1, roots_.data()};
  for (const std::size_t radix : radices_) {
    stage.blocks /= radix;
    Compute(stage, radix);
    stage.stride *= radix;
    Complex* const input = stage.x == data ? data : buffer_.data();
    stage.x = stage.y;
    stage.y = input;
  }
  if (stage.x != data) std::copy(buffer_.begin(), buffer_.end(), data);
}

void Plan::Chirp(Complex* data) {
  for (std::size_t k = 0; k < length_; ++k) buffer_[k] = Product(data[k], roots_[k]);
  std::fill(buffer_.begin() + static_cast<std::ptrdiff_t>(length_), buffer_.end(), 0.0);
  convolution_->Forward(buffer_.data());
  for (std::size_t k = 0; k < buffer_.size(); ++k) buffer_[k] = Product(buffer_[k], spectrum_[k]);
  // Backward, but for the order of the indices.
  convolution_->Forward(buffer_.data());
  data[0] = Product(buffer_[0], roots_[0]);
  for (std::size_t k = 1; k < length_; ++k)
    data[k] = Product(buffer_[buffer_.size() - k], roots_[k]);
}

}  // namespace corvath::math::dft
