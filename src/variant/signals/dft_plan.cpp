#include "variant/signals/dft_plan.h"

#include <algorithm>

namespace corvath::math::dft {

Plan::Plan(std::size_t length) : length_(length) {
  if (Stockham::Takes(length))
    smooth_.emplace(length);
  else
    chirp_.emplace(length);
}

std::size_t Plan::CountNumbers() const {
  return chirp_ ? chirp_->CountNumbers() : smooth_->CountNumbers() + buffer_.size();
}

void Plan::ReleaseLargeBuffers() {
  if (chirp_)
    chirp_->ReleaseLargeBuffers();
  else if (IsLarge(buffer_))
    buffer_ = {};
}

void Plan::Forward(Complex* data) {
  if (chirp_) return chirp_->Forward(data);
  buffer_.resize(length_);
  const Complex* const result = smooth_->Forward(data, buffer_.data());
  if (result != data) std::copy(buffer_.begin(), buffer_.end(), data);
}

/// The sums with the other sign are those of the indices counted backwards.
void Plan::Backward(Complex* data) {
  Forward(data);
  std::reverse(data + 1, data + length_);
}

}  // namespace corvath::math::dft
