#pragma once

#include <atomic>
#include <mutex>

namespace corvath::utils {

/// Work that the first thread to ask does and for which others wait; after an exception the next one
/// to ask tries again. std::call_once does that too, but sends exceptions through the C library, which
/// ends the process where it has no memory for its first one.
class Once {
 public:
  template <class Work>
  void Do(const Work& work) {
    if (is_done_.load(std::memory_order_acquire)) return;
    const std::lock_guard<std::mutex> lock(mutex_);
    if (is_done_.load(std::memory_order_relaxed)) return;
    work();
    is_done_.store(true, std::memory_order_release);
  }

 private:
  std::mutex mutex_;
  std::atomic<bool> is_done_{false};
};

}  // namespace corvath::utils
