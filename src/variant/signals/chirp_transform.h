#pragma once

#include "variant/signals/stockham.h"

#include <cstddef>
#include <vector>

namespace corvath::math::dft {

/// Forward transform of any length as a convolution with a chirp: L. I. Bluestein, "A linear
/// filtering approach to the computation of discrete Fourier transform", IEEE Trans. Audio
/// Electroacoust. 18 (1970), pp. 451-455.
///
/// The convolution is cyclic, of a smooth length rows * columns. Its two transforms go by columns
/// and by rows (D. H. Bailey, "FFTs in external or hierarchical memory", J. Supercomputing 4 (1990),
/// pp. 23-35), each in the caches; nothing is transposed, since both leave and take the same order.
class ChirpTransform {
 public:
  explicit ChirpTransform(std::size_t length);

  /// In place; uses buffers of the object.
  void Forward(Complex* data);
  /// Until the next transform.
  void ReleaseLargeBuffers();
  /// In memory.
  std::size_t CountNumbers() const;

 private:
  /// Calls load(row, first, count, to), transforms these parts of the columns and calls
  /// store(row, first, count, from), for all rows and columns.
  template <class Load, class Store>
  void TransformColumns(const Load& load, const Store& store);
  /// Number (row, column) of the transform by columns, times the root that the rows need.
  void StoreTurned(std::size_t row, std::size_t first, std::size_t count, const Complex* from);

  std::size_t length_;
  std::vector<Complex> chirp_;  ///< exp(-pi i k^2 / length)
  Stockham of_columns_;
  Stockham of_rows_;
  RootTable roots_;                ///< of the length of the convolution
  std::vector<Complex> matrix_;    ///< rows x columns, row by row
  std::vector<Complex> spectrum_;  ///< of the conjugate chirp over the convolution's length
  std::vector<Complex> work_;
  std::vector<Complex> buffer_;
};

}  // namespace corvath::math::dft
