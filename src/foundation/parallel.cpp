#include "foundation/parallel.h"

#include "foundation/worker_arena.h"

#include <sched.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_group.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <thread>
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

/// Takes over what the caller wrote, and hands over what a range wrote. oneTBB orders what happens
/// before, in and after ranges; this tells it to the thread sanitizer, which does not see into
/// Debian's build.
class HandOver {
 public:
  explicit HandOver(std::atomic<std::size_t>& count) : count_(count) {
    count_.fetch_add(1, std::memory_order_acq_rel);
  }
  HandOver(const HandOver&) = delete;
  HandOver& operator=(const HandOver&) = delete;
  ~HandOver() { count_.fetch_add(1, std::memory_order_acq_rel); }

 private:
  std::atomic<std::size_t>& count_;
};

/// How a parallel call runs whatever surrounds it: a host that cancels its own tasks, of which this
/// call may be part, does not cancel the ranges; and all of them round and trap as the caller does.
class OwnContext {
 public:
  tbb::task_group_context& Get() { return context_; }

 private:
  using Context = tbb::task_group_context;
  Context context_{Context::isolated, Context::default_traits | Context::fp_settings};
};

/// Of all pipelines: no task needs more than its address to take over.
std::atomic<std::size_t> pieces_handed_over{0};

/// Calls `body(first, last)` over ranges of blocks, if `one_by_one` block for block.
template <class Body>
void RunBlocks(std::size_t n_blocks, bool one_by_one, const Body& body) {
  const std::size_t num_threads = n_blocks > 1 ? LimitThreads(GetNumThreads()) : 1;
  if (num_threads == 1) return body(0, n_blocks);

  FirstFailure failure;
  std::atomic<std::size_t> handed_over{0};
  handed_over.store(1, std::memory_order_release);
  const ArenaLease arena(num_threads);
  const auto run = [&](const tbb::blocked_range<std::size_t>& blocks) {
    const HandOver hand_over(handed_over);
    const ArenaLease::Range range(arena);
    if (failure.IsBelow(blocks.begin())) return;
    try {
      body(blocks.begin(), blocks.end());
    } catch (...) {
      failure.Take(blocks.begin(), std::current_exception());
    }
  };
  const tbb::blocked_range<std::size_t> all(0, n_blocks);
  OwnContext context;
  arena.Get().execute([&] {
    // Isolated: a range that waits for ranges of its own must not take up those beside it.
    tbb::this_task_arena::isolate([&] {
      if (one_by_one)
        tbb::parallel_for(all, run, tbb::simple_partitioner(), context.Get());
      else
        tbb::parallel_for(all, run, context.Get());
    });
  });
  handed_over.load(std::memory_order_acquire);
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
  ReleaseIdleArenas();
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
  // At most `places` pieces are under way, consecutive ones: those that share a place never meet.
  std::size_t next = 0;
  bool is_over = false;
  const ArenaLease arena(num_threads);
  const auto begin = [&](tbb::flow_control& flow) {
    const HandOver hand_over(pieces_handed_over);
    const ArenaLease::Range range(arena);
    const std::size_t place = next;
    if (is_over || !guard(place, produce)) {
      flow.stop();
      return place;
    }
    is_over = failures[place] != nullptr;
    next = (next + 1) % places;
    return place;
  };
  const auto go_on = [&](std::size_t place) {
    const HandOver hand_over(pieces_handed_over);
    const ArenaLease::Range range(arena);
    guard(place, [&](std::size_t own) { return work(own), true; });
    return place;
  };
  const auto end = [&](std::size_t place) {
    const HandOver hand_over(pieces_handed_over);
    const ArenaLease::Range range(arena);
    guard(place, [&](std::size_t own) { return consume(own), true; });
    if (failures[place]) std::rethrow_exception(failures[place]);
  };
  const HandOver hand_over(pieces_handed_over);  // at the end, also of a failure, to the caller
  OwnContext context;
  arena.Get().execute([&] {
    tbb::this_task_arena::isolate([&] {
      using Mode = tbb::filter_mode;
      tbb::parallel_pipeline(places,
                             tbb::make_filter<void, std::size_t>(Mode::serial_in_order, begin) &
                                 tbb::make_filter<std::size_t, std::size_t>(Mode::parallel, go_on) &
                                 tbb::make_filter<std::size_t, void>(Mode::serial_in_order, end),
                             context.Get());
    });
  });
}

}  // namespace corvath::utils
