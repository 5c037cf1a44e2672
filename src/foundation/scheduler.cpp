#include "foundation/scheduler.h"

#include "foundation/host_signals.h"

#include <dlfcn.h>
#include <pthread.h>
#include <tbb/global_control.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>
#include <tbb/task_scheduler_observer.h>
#include <tbb/version.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#ifdef ZEL_THREAD_SANITIZER
extern "C" {
void __tsan_acquire(void* address);
void __tsan_release(void* address);
}
#endif

namespace corvath::utils {
namespace {

/// A point that tells the thread sanitizer what oneTBB sees to: all before a Release() happens before
/// all after the Acquire() that follows. It knows nothing of Debian's build of oneTBB, nor of this
/// file, which is compiled without it; so no report needs to be suppressed.
class Handover {
 public:
#ifdef ZEL_THREAD_SANITIZER
  void Acquire() {
    __tsan_acquire(this);
  }
  void Release() {
    __tsan_release(this);
  }
#else
  void Acquire() {}
  void Release() {}
#endif
};

/// Takes over at one point, and hands over to the next when it dies.
class Stage {
 public:
  Stage(Handover& from, Handover& to) : to_(to) { from.Acquire(); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  ~Stage() { to_.Release(); }

 private:
  Handover& to_;
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

/// Sees workers come and go. Keeps the host's signals off them, for good: they sleep outside of the
/// arena.
class WorkerObserver : public tbb::task_scheduler_observer {
 public:
  explicit WorkerObserver(tbb::task_arena& arena) : tbb::task_scheduler_observer(arena) {
    observe(true);
  }
  ~WorkerObserver() override {
    AwaitLeaving();
    observe(false);  // waits for the functions below
  }

  void on_scheduler_entry(bool is_worker) override {
    if (!is_worker) return;
    ++num_inside_;
    BlockSignals();
  }
  void on_scheduler_exit(bool is_worker) override {
    if (is_worker) --num_inside_;
  }

 private:
  /// Who told the end of the last range is still on its way out through code of this library, which
  /// the host may be about to unload. A worker without work leaves within a millisecond.
  void AwaitLeaving() const {
    constexpr std::chrono::seconds kLongest(2);  // should a scheduler ever keep it
    const auto start = std::chrono::steady_clock::now();
    while (num_inside_ > 0 && std::chrono::steady_clock::now() - start < kLongest)
      std::this_thread::yield();
  }

  std::atomic<int> num_inside_{0};
};

/// Workers sleep inside oneTBB's code; it must stay when the host closes this library.
void PinScheduler() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&TBB_runtime_interface_version), &info) != 0)
    dlopen(info.dli_fname, RTLD_LAZY | RTLD_NOLOAD | RTLD_NODELETE);
}

/// Where the ranges of one caller run. No two callers share one: an arena has as many places as
/// threads, and who finds none waits, and meanwhile takes up what others left there. Holding a lock
/// that those need, it would never end.
struct WorkerArena {
  explicit WorkerArena(std::size_t count)
      : num_threads(count), arena(static_cast<int>(count)), observer(arena) {}
  std::size_t num_threads;
  tbb::task_arena arena;
  WorkerObserver observer;  ///< brings the arena into being
  std::unique_ptr<WorkerArena> next_idle;
};

/// The arena whose range this thread runs.
thread_local WorkerArena* entered_arena = nullptr;

// Nothing of this is destroyed: a thread may work on while another one ends the process.
std::mutex arena_mutex;
WorkerArena* idle_arenas = nullptr;  ///< a stack; never more than there were callers at once
bool has_worked = false;
using Limit = tbb::global_control;
Limit* raised_limit = nullptr;
std::size_t raised_to = 0;
std::atomic<bool> is_forked_from_work{false};
std::atomic<bool> is_closed{false};

void OnForkedChild() {
  if (has_worked) is_forked_from_work = true;
  idle_arenas = nullptr;  // oneTBB's bookkeeping is left alone for good
  raised_limit = nullptr;
  arena_mutex.unlock();
}

std::unique_ptr<WorkerArena> PopIdle() {
  std::unique_ptr<WorkerArena> top(idle_arenas);
  if (top) idle_arenas = top->next_idle.release();
  return top;
}

/// Ends all use of oneTBB when the library is unloaded or the process ends. Made before the first
/// use, so that it is destroyed before oneTBB, whichever copy of it the host has us use: the loader
/// knows no order between that and this library.
struct Use {
  Use() {
    PinScheduler();
    pthread_atfork([] { arena_mutex.lock(); }, [] { arena_mutex.unlock(); }, OnForkedChild);
  }
  Use(const Use&) = delete;
  Use& operator=(const Use&) = delete;
  ~Use() {
    is_closed = true;
    ReleaseScheduler();
  }
};

void BeginUse() {
  static const Use use;
}

/// oneTBB has no more threads than processors unless told so before an arena asks for them; then it
/// complains on standard error.
void RaiseLimit(std::size_t count) {
  const std::lock_guard<std::mutex> lock(arena_mutex);
  if (raised_limit != nullptr && raised_to >= count) return;
  auto higher = std::make_unique<Limit>(Limit::max_allowed_parallelism, count);
  delete raised_limit;
  raised_limit = higher.release();
  raised_to = count;
}

WorkerArena* TakeArena(std::size_t num_threads) {
  BeginUse();
  for (;;) {
    std::unique_ptr<WorkerArena> arena;  // one of another size is destroyed without the lock
    {
      const std::lock_guard<std::mutex> lock(arena_mutex);
      has_worked = true;
      arena = PopIdle();
    }
    if (!arena) arena = std::make_unique<WorkerArena>(num_threads);
    if (arena->num_threads == num_threads) return arena.release();
  }
}

void GiveBack(WorkerArena* arena) {
  const std::lock_guard<std::mutex> lock(arena_mutex);
  if (is_closed) return;  // the process ends; whether oneTBB has, nobody knows
  arena->next_idle.reset(idle_arenas);
  idle_arenas = arena;
}

/// The arena of a call. One within a range stays in the arena of its range.
class ArenaLease {
 public:
  explicit ArenaLease(std::size_t num_threads)
      : arena_(entered_arena), is_nested_(entered_arena != nullptr) {
    if (!is_nested_) arena_ = TakeArena(num_threads);
  }
  ArenaLease(const ArenaLease&) = delete;
  ArenaLease& operator=(const ArenaLease&) = delete;
  ~ArenaLease() {
    if (!is_nested_) GiveBack(arena_);
  }

  /// Isolated: a range that waits for ranges of its own must not take up those beside it.
  template <class Work>
  void Execute(const Work& work) {
    arena_->arena.execute([&] { tbb::this_task_arena::isolate(work); });
  }

  /// Marks this thread as one that runs a range.
  class Range {
   public:
    explicit Range(const ArenaLease& lease) : before_(entered_arena) {
      entered_arena = lease.arena_;
    }
    Range(const Range&) = delete;
    Range& operator=(const Range&) = delete;
    ~Range() { entered_arena = before_; }

   private:
    WorkerArena* before_;
  };

 private:
  WorkerArena* arena_;
  bool is_nested_;
};

}  // namespace

std::size_t LimitThreads(std::size_t count) {
  if (count <= 1 || entered_arena != nullptr) return count;
  if (is_closed) return 1;
  BeginUse();
  const auto get_allowed = [] { return Limit::active_value(Limit::max_allowed_parallelism); };
  if (count <= get_allowed()) return count;
  // Of several limits the lowest holds: one that the host has set does not give way.
  if (count > static_cast<std::size_t>(tbb::info::default_concurrency())) RaiseLimit(count);
  return std::min(count, get_allowed());
}

void RunRanges(std::size_t num_threads, std::size_t count, bool one_by_one,
               const std::function<void(std::size_t first, std::size_t last)>& body) {
  Handover begun;
  Handover ended;
  ArenaLease arena(num_threads);
  const auto run = [&](const tbb::blocked_range<std::size_t>& range) {
    const Stage stage(begun, ended);
    const ArenaLease::Range inside(arena);
    body(range.begin(), range.end());
  };
  const tbb::blocked_range<std::size_t> all(0, count);
  OwnContext context;
  begun.Release();
  arena.Execute([&] {
    if (one_by_one)
      tbb::parallel_for(all, run, tbb::simple_partitioner(), context.Get());
    else
      tbb::parallel_for(all, run, context.Get());
  });
  ended.Acquire();
}

void RunPipeline(std::size_t num_threads, std::size_t places,
                 const std::function<bool(std::size_t place)>& produce,
                 const std::function<void(std::size_t place)>& work,
                 const std::function<void(std::size_t place)>& consume) {
  // Pieces under way are consecutive ones: those that share a place never meet.
  std::size_t next = 0;
  struct Steps {
    Handover produced;
    Handover worked;
    Handover consumed;
  };
  std::vector<Steps> steps(places);
  Handover producer;
  Handover consumer;
  ArenaLease arena(num_threads);
  const auto begin = [&](tbb::flow_control& flow) {
    const std::size_t place = next;
    const Stage in_order(producer, producer);
    const Stage of_place(steps[place].consumed, steps[place].produced);
    const ArenaLease::Range inside(arena);
    if (produce(place))
      next = (next + 1) % places;
    else
      flow.stop();
    return place;
  };
  const auto go_on = [&](std::size_t place) {
    const Stage of_place(steps[place].produced, steps[place].worked);
    const ArenaLease::Range inside(arena);
    work(place);
    return place;
  };
  const auto end = [&](std::size_t place) {
    const Stage in_order(consumer, consumer);
    const Stage of_place(steps[place].worked, steps[place].consumed);
    const ArenaLease::Range inside(arena);
    consume(place);
  };
  OwnContext context;
  producer.Release();
  arena.Execute([&] {
    using Mode = tbb::filter_mode;
    tbb::parallel_pipeline(places,
                           tbb::make_filter<void, std::size_t>(Mode::serial_in_order, begin) &
                               tbb::make_filter<std::size_t, std::size_t>(Mode::parallel, go_on) &
                               tbb::make_filter<std::size_t, void>(Mode::serial_in_order, end),
                           context.Get());
  });
  producer.Acquire();
  consumer.Acquire();
}

void ReleaseScheduler() {
  {
    const std::lock_guard<std::mutex> lock(arena_mutex);
    delete std::exchange(raised_limit, nullptr);
  }
  for (;;) {
    std::unique_ptr<WorkerArena> arena;  // destroyed without the lock
    const std::lock_guard<std::mutex> lock(arena_mutex);
    arena = PopIdle();
    if (!arena) return;
  }
}

bool IsForkedFromWork() {
  return is_forked_from_work;
}

}  // namespace corvath::utils
