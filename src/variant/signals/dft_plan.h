#pragma once

#include "variant/signals/chirp_transform.h"
#include "variant/signals/stockham.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace corvath::math::dft {

/// Forward transform of one length: lengths without large prime factors go by stages, all others by
/// a chirp.
class Plan {
 public:
  using Complex = dft::Complex;

  /// @param length  above 0
  explicit Plan(std::size_t length);

  std::size_t GetLength() const { return length_; }
  /// In memory.
  std::size_t CountNumbers() const;

  /// In place; uses buffers of the plan.
  void Forward(Complex* data);
  void Backward(Complex* data);
  /// Until the next transform.
  void ReleaseLargeBuffers();

 private:
  std::size_t length_;
  std::optional<Stockham> smooth_;
  std::optional<ChirpTransform> chirp_;
  std::vector<Complex> buffer_;
};

}  // namespace corvath::math::dft
