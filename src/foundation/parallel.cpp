#include "foundation/parallel.h"

#include "foundation/scheduler.h"

#include <sched.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace corvath::utils {
namespace {

constexpr std::size_t kMaxThreads = 1024;

std::atomic<std::size_t> requested_threads{0};

std::size_t CountProcessors() {
  cpu_set_t set;
  if (sched_getaffinity(0, sizeof(set), &set) == 0)
    return static_cast<std::size_t>(std::max(CPU_COUNT(&set), 1));
  return std::max(std::thread::hardware_concurrency(), 1u);  // more processors than the set holds
}

/// The number that the environment asks for, 0 for none. Read at each call: it is the only way by
/// which a host that has nothing but the C functions can change it.
std::size_t FromEnvironment() {
  const char* const text = std::getenv("ZELSOLVER_NUM_THREADS");
  if (text == nullptr) return 0;
  const char* const end = text + std::strlen(text);
  std::size_t count = 0;
  const auto [stop, error] = std::from_chars(text, end, count);
  return error == std::errc() && stop == end && count <= kMaxThreads ? count : 0;
}

/// What the ranges failed with: the failure of the lowest one counts.
class FirstFailure {
 public:
  bool IsBelow(std::size_t begin) const { return position_.load() < begin; }

  void Take(std::size_t begin, std::exception_ptr error) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (begin >= position_.load()) return;
    position_ = begin;
    error_ = std::move(error);
  }

  void Rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  std::mutex mutex_;
  std::atomic<std::size_t> position_{static_cast<std::size_t>(-1)};
  std::exception_ptr error_;
};

/// Calls `body(first, last)` over ranges of blocks, if `one_by_one` block for block.
template <class Body>
void RunBlocks(std::size_t n_blocks, bool one_by_one, const Body& body) {
  const std::size_t num_threads = n_blocks > 1 ? LimitThreads(GetNumThreads()) : 1;
  if (num_threads == 1) return body(0, n_blocks);

  FirstFailure failure;
  RunRanges(num_threads, n_blocks, one_by_one, [&](std::size_t first, std::size_t last) {
    if (failure.IsBelow(first)) return;
    try {
      body(first, last);
    } catch (...) {
      failure.Take(first, std::current_exception());
    }
  });
  failure.Rethrow();
}

}  // namespace

std::size_t GetNumThreads() {
  if (IsForkedFromWork()) return 1;
  if (const std::size_t requested = requested_threads; requested > 0) return requested;
  if (const std::size_t count = FromEnvironment(); count > 0) return count;
  return CountProcessors();
}

void SetNumThreads(std::size_t count) {
  requested_threads = std::min(count, kMaxThreads);
}

void ReleaseThreads() {
  ReleaseScheduler();
}

void ParallelFor(std::size_t count, std::size_t grain,
                 const std::function<void(std::size_t begin, std::size_t end)>& body) {
  if (count == 0) return;
  grain = std::max<std::size_t>(grain, 1);
  RunBlocks((count - 1) / grain + 1, /*one_by_one=*/false,
            [&](std::size_t first, std::size_t last) {
              body(first * grain, last > (count - 1) / grain ? count : last * grain);
            });
}

void ParallelTasks(std::size_t count, const std::function<void(std::size_t i)>& body) {
  if (count == 0) return;
  RunBlocks(count, /*one_by_one=*/true, [&](std::size_t first, std::size_t last) {
    for (std::size_t i = first; i < last; ++i) body(i);
  });
}

void ParallelPipeline(std::size_t places, const std::function<bool(std::size_t place)>& produce,
                      const std::function<void(std::size_t place)>& work,
                      const std::function<void(std::size_t place)>& consume) {
  const std::size_t num_threads = places > 1 ? LimitThreads(GetNumThreads()) : 1;
  if (num_threads == 1) {
    while (produce(0)) {
      work(0);
      consume(0);
    }
    return;
  }
  // A failure travels with its piece, so that the pieces before it are consumed first.
  std::vector<std::exception_ptr> failures(places);
  const auto guard = [&](std::size_t place, const auto& step) {
    if (failures[place]) return true;
    try {
      return step(place);
    } catch (...) {
      failures[place] = std::current_exception();
      return true;
    }
  };
  bool is_over = false;        // of the producer
  std::exception_ptr failure;  // of the consumer
  std::atomic<bool> has_failed{false};
  RunPipeline(
      num_threads, places,
      [&](std::size_t place) {
        if (is_over || has_failed || !guard(place, produce)) return false;
        is_over = failures[place] != nullptr;
        return true;
      },
      [&](std::size_t place) { guard(place, [&](std::size_t own) { return work(own), true; }); },
      [&](std::size_t place) {
        if (has_failed) return;
        guard(place, [&](std::size_t own) { return consume(own), true; });
        failure = std::exchange(failures[place], nullptr);
        has_failed = failure != nullptr;
      });
  if (failure) std::rethrow_exception(failure);
}

}  // namespace corvath::utils
