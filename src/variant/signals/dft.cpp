#include "variant/signals/dft.h"

#include "variant/signals/idle_plan.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace corvath::math::dft {

using Complex = std::complex<double>;

class Descriptor {
 public:
  Descriptor(std::size_t rows, std::size_t columns) : rows_(rows), columns_(columns) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (row_plan_) GiveBack(std::move(row_plan_));
  }

  bool IsCommitted() const { return committed_; }

  void Commit() {
    if (committed_) return;
    row_plan_ = TakePlan(columns_);
    if (rows_ > 1) {
      column_plan_ = std::make_unique<Plan>(rows_);
      columns_buffer_.resize(kBundle * rows_);
    }
    committed_ = true;
  }

  /// @param transform  Plan::Forward or Plan::Backward
  void Compute(Complex* data, void (Plan::*transform)(Complex*)) {
    for (std::size_t r = 0; r < rows_; ++r) (*row_plan_.*transform)(data + r * columns_);
    if (rows_ == 1) return;
    // Columns go through a buffer, some at a time, so that each line of the cache is used whole.
    for (std::size_t first = 0; first < columns_; first += kBundle) {
      const std::size_t count = std::min(kBundle, columns_ - first);
      for (std::size_t r = 0; r < rows_; ++r)
        for (std::size_t c = 0; c < count; ++c)
          columns_buffer_[c * rows_ + r] = data[r * columns_ + first + c];
      for (std::size_t c = 0; c < count; ++c)
        (*column_plan_.*transform)(columns_buffer_.data() + c * rows_);
      for (std::size_t r = 0; r < rows_; ++r)
        for (std::size_t c = 0; c < count; ++c)
          data[r * columns_ + first + c] = columns_buffer_[c * rows_ + r];
    }
  }

 private:
  static constexpr std::size_t kBundle = 8;

  std::size_t rows_;
  std::size_t columns_;
  bool committed_ = false;
  std::unique_ptr<Plan> row_plan_;     ///< of length columns_
  std::unique_ptr<Plan> column_plan_;  ///< of length rows_, if that is above 1
  std::vector<Complex> columns_buffer_;
};

namespace {

/// Lengths whose tables the address space could not hold are no question of free memory.
constexpr std::size_t kMaxLength = static_cast<std::size_t>(-1) / (64 * sizeof(Complex));

Status Transform(Descriptor* handle, Complex* data, void (Plan::*transform)(Complex*)) {
  if (handle == nullptr) return kInvalidDescriptor;
  if (!handle->IsCommitted()) return kNotCommitted;
  try {
    handle->Compute(data, transform);
    return kNoError;
  } catch (...) {  // the buffers did not fit
    return kMemoryError;
  }
}

}  // namespace

Status Create(Descriptor*& handle, std::size_t length) noexcept {
  return Create(handle, 1, length);
}

Status Create(Descriptor*& handle, std::size_t rows, std::size_t columns) noexcept {
  handle = nullptr;
  if (rows == 0 || columns == 0 || rows > kMaxLength || columns > kMaxLength) return kInvalidLength;
  handle = new (std::nothrow) Descriptor(rows, columns);
  return handle != nullptr ? kNoError : kMemoryError;
}

Status Commit(Descriptor* handle) noexcept {
  if (handle == nullptr) return kInvalidDescriptor;
  try {
    handle->Commit();
    return kNoError;
  } catch (...) {  // the tables did not fit
    return kMemoryError;
  }
}

Status Forward(Descriptor* handle, Complex* data) noexcept {
  return Transform(handle, data, &Plan::Forward);
}

Status Backward(Descriptor* handle, Complex* data) noexcept {
  return Transform(handle, data, &Plan::Backward);
}

Status Free(Descriptor*& handle) noexcept {
  if (handle == nullptr) return kInvalidDescriptor;
  delete handle;
  handle = nullptr;
  return kNoError;
}

const char* StatusText(Status status) noexcept {
  switch (status) {
    case kNoError:
      return "No error.";
    case kMemoryError:
      return "Not enough memory.";
    case kInvalidLength:
      return "Invalid length.";
    case kNotCommitted:
      return "Descriptor is not committed.";
    case kInvalidDescriptor:
      return "Invalid descriptor.";
  }
  return "Unknown status.";
}

}  // namespace corvath::math::dft
