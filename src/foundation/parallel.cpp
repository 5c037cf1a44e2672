#include "foundation/parallel.h"

#include <dlfcn.h>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <tbb/global_control.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>
#include <tbb/task_scheduler_observer.h>
#include <tbb/version.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace corvath::utils {
namespace {

constexpr std::size_t kMaxThreads = 1024;

/// Keeps the host's signals off the workers: a handler runs on a thread that the host knows. Those
/// of faults stay, they belong to the thread at fault. Workers keep the mask when they leave, since
/// they sleep outside of the arena.
class SignalBlocker : public tbb::task_scheduler_observer {
 public:
  explicit SignalBlocker(tbb::task_arena& arena) : tbb::task_scheduler_observer(arena) {
    observe(true);
  }
  ~SignalBlocker() override { observe(false); }

  void on_scheduler_entry(bool is_worker) override {
    if (!is_worker) return;
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT})
      sigdelset(&signals, fault);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  }
};

using Limit = tbb::global_control;

/// oneTBB has no more threads than processors unless told so before an arena asks for them; then it
/// complains on standard error.
std::unique_ptr<Limit> AllowThreads(std::size_t count) {
  if (static_cast<int>(count) <= tbb::info::default_concurrency()) return nullptr;
  return std::make_unique<Limit>(Limit::max_allowed_parallelism, count);
}

struct Arena {
  explicit Arena(std::size_t count)
      : num_threads(count),
        limit(AllowThreads(count)),
        arena(static_cast<int>(count)),
        blocker(arena) {}
  std::size_t num_threads;
  std::unique_ptr<Limit> limit;
  tbb::task_arena arena;
  SignalBlocker blocker;  ///< brings the arena into being
};

std::atomic<std::size_t> requested_threads{0};
std::atomic<bool> is_forked_child{false};
std::mutex arena_mutex;
std::shared_ptr<Arena> current_arena;

/// The child has one thread, whatever the parent's bookkeeping says: it works alone, and never
/// touches that bookkeeping again, not even to take it down.
void OnForkedChild() {
  if (current_arena) {
    is_forked_child = true;
    new std::shared_ptr<Arena>(std::move(current_arena));
  }
  arena_mutex.unlock();
}

/// Workers sleep inside oneTBB's code; it must stay when the host closes this library.
void PinScheduler() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&TBB_runtime_interface_version), &info) != 0)
    dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

std::shared_ptr<Arena> GetArena(std::size_t num_threads) {
  static std::once_flag once;
  std::call_once(once, [] {
    PinScheduler();
    pthread_atfork([] { arena_mutex.lock(); }, [] { arena_mutex.unlock(); }, OnForkedChild);
  });
  const std::lock_guard<std::mutex> lock(arena_mutex);
  if (!current_arena || current_arena->num_threads != num_threads)
    current_arena = std::make_shared<Arena>(num_threads);
  return current_arena;
}

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

/// Of all pipelines: no task needs more than its address to take over.
std::atomic<std::size_t> pieces_handed_over{0};

/// Calls `body(first, last)` over ranges of blocks, if `one_by_one` block for block.
template <class Body>
void RunBlocks(std::size_t n_blocks, bool one_by_one, const Body& body) {
  const std::size_t num_threads = n_blocks > 1 ? GetNumThreads() : 1;
  if (num_threads == 1) return body(0, n_blocks);

  FirstFailure failure;
  std::atomic<std::size_t> handed_over{0};
  handed_over.store(1, std::memory_order_release);
  const auto run = [&](const tbb::blocked_range<std::size_t>& blocks) {
    const HandOver hand_over(handed_over);
    if (failure.IsBelow(blocks.begin())) return;
    try {
      body(blocks.begin(), blocks.end());
    } catch (...) {
      failure.Take(blocks.begin(), std::current_exception());
    }
  };
  const tbb::blocked_range<std::size_t> all(0, n_blocks);
  const auto arena = GetArena(num_threads);
  arena->arena.execute([&] {
    // Isolated: a caller that waits for its own ranges must not take up those of another.
    tbb::this_task_arena::isolate([&] {
      if (one_by_one)
        tbb::parallel_for(all, run, tbb::simple_partitioner());
      else
        tbb::parallel_for(all, run);
    });
  });
  handed_over.load(std::memory_order_acquire);
  failure.Rethrow();
}

}  // namespace

std::size_t GetNumThreads() {
  if (is_forked_child) return 1;
  if (const std::size_t requested = requested_threads; requested > 0) return requested;
  if (const std::size_t count = FromEnvironment(); count > 0) return count;
  return CountProcessors();
}

void SetNumThreads(std::size_t count) {
  requested_threads = std::min(count, kMaxThreads);
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
  const std::size_t num_threads = places > 1 ? GetNumThreads() : 1;
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
  const auto begin = [&](tbb::flow_control& flow) {
    const HandOver hand_over(pieces_handed_over);
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
    guard(place, [&](std::size_t own) { return work(own), true; });
    return place;
  };
  const auto end = [&](std::size_t place) {
    const HandOver hand_over(pieces_handed_over);
    guard(place, [&](std::size_t own) { return consume(own), true; });
    if (failures[place]) std::rethrow_exception(failures[place]);
  };
  const HandOver hand_over(pieces_handed_over);  // at the end, also of a failure, to the caller
  const auto arena = GetArena(num_threads);
  arena->arena.execute([&] {
    tbb::this_task_arena::isolate([&] {
      using Mode = tbb::filter_mode;
      tbb::parallel_pipeline(places,
                             tbb::make_filter<void, std::size_t>(Mode::serial_in_order, begin) &
                                 tbb::make_filter<std::size_t, std::size_t>(Mode::parallel, go_on) &
                                 tbb::make_filter<std::size_t, void>(Mode::serial_in_order, end));
    });
  });
}

}  // namespace corvath::utils
