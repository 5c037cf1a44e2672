#include "variant/signals/chirp_transform.h"

#include <algorithm>
#include <cmath>

namespace corvath::math::dft {

namespace {

/// Columns that are transformed at once: two lines of the cache of each row.
constexpr std::size_t kColumns = 8;

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

/// Of the lengths of the convolution's columns the one next to its root, at most that.
std::size_t NumberRows(std::size_t padded) {
  auto rows = static_cast<std::size_t>(std::sqrt(static_cast<double>(padded)));
  while (padded % rows != 0) --rows;
  return rows;
}

/// j k = (j^2 + k^2 - (k - j)^2) / 2 makes the transform a convolution with the conjugate chirp.
std::vector<Complex> Chirp(std::size_t length) {
  std::vector<Complex> chirp(length);
  const std::uint64_t period = 2 * static_cast<std::uint64_t>(length);
  const RootTable table(period);
  std::uint64_t square = 0;  // k^2 modulo the chirp's period, exactly
  for (std::size_t k = 0; k < length; ++k) {
    chirp[k] = table(square);
    square += 2 * k + 1;  // less than two periods
    if (square >= period) square -= period;
  }
  return chirp;
}

}  // namespace

ChirpTransform::ChirpTransform(std::size_t length)
    : length_(length),
      chirp_(Chirp(length)),
      of_columns_(NumberRows(SmoothLength(2 * length - 1))),
      of_rows_(SmoothLength(2 * length - 1) / of_columns_.GetLength()),
      roots_(of_columns_.GetLength() * of_rows_.GetLength()),
      matrix_(of_columns_.GetLength() * of_rows_.GetLength()),
      work_(std::max(of_columns_.GetLength() * kColumns, of_rows_.GetLength())),
      buffer_(work_.size()) {
  const std::size_t padded = matrix_.size();
  const std::size_t columns = of_rows_.GetLength();
  const double scale = 1.0 / static_cast<double>(padded);
  matrix_[0] = scale * std::conj(chirp_[0]);
  for (std::size_t k = 1; k < length_; ++k)
    matrix_[k] = matrix_[padded - k] = scale * std::conj(chirp_[k]);
  TransformColumns([&](std::size_t row, std::size_t first, std::size_t count,
                       Complex* to) { std::copy_n(&matrix_[row * columns + first], count, to); },
                   [&](std::size_t row, std::size_t first, std::size_t count, const Complex* from) {
                     StoreTurned(row, first, count, from);
                   });
  spectrum_.resize(padded);
  for (std::size_t begin = 0; begin < padded; begin += columns) {
    const Complex* const row = of_rows_.Forward(&matrix_[begin], buffer_.data());
    std::copy_n(row, columns, &spectrum_[begin]);
  }
}

template <class Load, class Store>
void ChirpTransform::TransformColumns(const Load& load, const Store& store) {
  const std::size_t rows = of_columns_.GetLength();
  const std::size_t columns = of_rows_.GetLength();
  for (std::size_t first = 0; first < columns; first += kColumns) {
    const std::size_t count = std::min(kColumns, columns - first);
    for (std::size_t row = 0; row < rows; ++row) load(row, first, count, &work_[row * count]);
    const Complex* const result = of_columns_.Forward(work_.data(), buffer_.data(), count);
    for (std::size_t row = 0; row < rows; ++row) store(row, first, count, result + row * count);
  }
}

void ChirpTransform::StoreTurned(std::size_t row, std::size_t first, std::size_t count,
                                 const Complex* from) {
  Complex* const to = &matrix_[row * of_rows_.GetLength() + first];
  for (std::size_t b = 0; b < count; ++b) to[b] = Product(from[b], roots_(row * (first + b)));
}

void ChirpTransform::ReleaseLargeBuffers() {
  if (IsLarge(matrix_)) matrix_ = {};
}

std::size_t ChirpTransform::CountNumbers() const {
  return chirp_.size() + of_columns_.CountNumbers() + of_rows_.CountNumbers() + matrix_.size() +
         spectrum_.size() + work_.size() + buffer_.size();
}

void ChirpTransform::Forward(Complex* data) {
  const std::size_t columns = of_rows_.GetLength();
  matrix_.resize(spectrum_.size());
  TransformColumns(
      [&](std::size_t row, std::size_t first, std::size_t count, Complex* to) {
        const std::size_t begin = row * columns + first;
        const std::size_t some = std::min(count, std::max(begin, length_) - begin);
        for (std::size_t b = 0; b < some; ++b) to[b] = Product(data[begin + b], chirp_[begin + b]);
        std::fill(to + some, to + count, 0.0);
      },
      [&](std::size_t row, std::size_t first, std::size_t count, const Complex* from) {
        StoreTurned(row, first, count, from);
      });
  // The transform back is that of the conjugate numbers: by rows, then by columns.
  for (std::size_t begin = 0, row = 0; begin < matrix_.size(); begin += columns, ++row) {
    Complex* const numbers = &matrix_[begin];
    Complex* const there = of_rows_.Forward(numbers, buffer_.data());
    for (std::size_t k = 0; k < columns; ++k)
      there[k] = std::conj(Product(there[k], spectrum_[begin + k]));
    const Complex* const back =
        of_rows_.Forward(there, there == numbers ? buffer_.data() : numbers);
    for (std::size_t k = 0; k < columns; ++k) numbers[k] = Product(back[k], roots_(row * k));
  }
  TransformColumns([&](std::size_t row, std::size_t first, std::size_t count,
                       Complex* to) { std::copy_n(&matrix_[row * columns + first], count, to); },
                   [&](std::size_t row, std::size_t first, std::size_t count, const Complex* from) {
                     const std::size_t begin = row * columns + first;
                     const std::size_t some = std::min(count, std::max(begin, length_) - begin);
                     for (std::size_t b = 0; b < some; ++b)
                       data[begin + b] = Product(std::conj(from[b]), chirp_[begin + b]);
                   });
}

}  // namespace corvath::math::dft
