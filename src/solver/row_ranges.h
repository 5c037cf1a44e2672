#pragma once

#include "foundation/parallel.h"

#include <algorithm>
#include <cstddef>

namespace corvath::zel {

/// The rows of a call in ranges of one size, whatever the number of threads: where a row stands in
/// its range may decide how a product sums it up, and results must not depend on the threads.
class RowRanges {
 public:
  explicit RowRanges(std::size_t rows) : rows_(rows) {}

  /// At least one: no rows are one empty range.
  std::size_t GetCount() const { return rows_ == 0 ? 1 : (rows_ - 1) / kRows + 1; }
  std::size_t GetBegin(std::size_t range) const { return range * kRows; }
  std::size_t GetSize(std::size_t range) const { return std::min(kRows, rows_ - range * kRows); }

  /// Calls `body(i)` for each i below `count`: side by side where the rows are worth it.
  template <class Body>
  void Run(std::size_t count, const Body& body) const {
    if (rows_ >= kFewRows) return utils::ParallelTasks(count, body);
    for (std::size_t i = 0; i < count; ++i) body(i);
  }

 private:
  static constexpr std::size_t kRows = 1024;     ///< a multiple of the models' own blocks
  static constexpr std::size_t kFewRows = 1000;  ///< waking a thread takes as long as these

  std::size_t rows_;
};

}  // namespace corvath::zel
