#include "variant/signals/stockham.h"

#include "foundation/constants.h"

#include <cmath>
#include <utility>

namespace corvath::math::dft {

namespace {

constexpr std::size_t kLargestRadix = 31;

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

/// One stage of Stockham's transforms. The numbers are an array [radix][blocks][stride] at `x`; the
/// radix' transform over the first index goes to [blocks][radix][stride] at `y`, times the root of
/// block * (index of the radix) / (radix * blocks).
struct Stage {
  const Complex* x;
  Complex* y;
  std::size_t blocks;
  std::size_t stride;
  const Complex* roots;  ///< of the whole length, which is radix * blocks * root_step
  std::size_t root_step;
};

void StageOf2(const Stage& stage) {
  const std::size_t step = stage.blocks * stage.stride;
  for (std::size_t p = 0; p < stage.blocks; ++p) {
    const Complex w1 = stage.roots[p * stage.root_step];
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
    const Complex w1 = stage.roots[p * stage.root_step];
    const Complex w2 = stage.roots[2 * p * stage.root_step];
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
    const Complex w1 = stage.roots[p * stage.root_step];
    const Complex w2 = stage.roots[2 * p * stage.root_step];
    const Complex w3 = stage.roots[3 * p * stage.root_step];
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
    const Complex w1 = stage.roots[p * stage.root_step];
    const Complex w2 = stage.roots[2 * p * stage.root_step];
    const Complex w3 = stage.roots[3 * p * stage.root_step];
    const Complex w4 = stage.roots[4 * p * stage.root_step];
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
          sum += Product(numbers[j], stage.roots[j * k % radix * stage.blocks * stage.root_step]);
        y[q + k * stage.stride] = Product(sum, stage.roots[k * p * stage.root_step]);
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

RootTable::RootTable(std::uint64_t n) {
  for (std::uint64_t k = 0; k < kLow && k < n; ++k) low_.push_back(Root(k, n));
  for (std::uint64_t k = 0; k < n; k += kLow) high_.push_back(Root(k, n));
}

bool Stockham::Takes(std::size_t length) {
  return length == 1 || !Radices(length).empty();
}

Stockham::Stockham(std::size_t length)
    : length_(length), radices_(Radices(length)), roots_(Roots(length)) {}

Complex* Stockham::Forward(Complex* data, Complex* buffer, std::size_t batch) const {
  Stage stage{data, buffer, length_, batch, roots_.data(), 1};
  for (const std::size_t radix : radices_) {
    stage.blocks /= radix;
    Compute(stage, radix);
    stage.stride *= radix;
    stage.root_step *= radix;
    Complex* const input = stage.x == data ? data : buffer;
    stage.x = stage.y;
    stage.y = input;
  }
  return stage.y == data ? buffer : data;
}

}  // namespace corvath::math::dft
