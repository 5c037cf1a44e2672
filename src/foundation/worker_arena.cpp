#include "foundation/worker_arena.h"

#include "foundation/host_signals.h"

#include <dlfcn.h>
#include <pthread.h>
#include <tbb/global_control.h>
#include <tbb/info.h>
#include <tbb/task_scheduler_observer.h>
#include <tbb/version.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>

namespace corvath::utils {
namespace {

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

}  // namespace

struct WorkerArena {
  explicit WorkerArena(std::size_t count)
      : num_threads(count), arena(static_cast<int>(count)), observer(arena) {}
  std::size_t num_threads;
  tbb::task_arena arena;
  WorkerObserver observer;  ///< brings the arena into being
  std::unique_ptr<WorkerArena> next_idle;
};

namespace {

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
    ReleaseIdleArenas();
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

ArenaLease::ArenaLease(std::size_t num_threads)
    : arena_(entered_arena), is_nested_(entered_arena != nullptr) {
  if (!is_nested_) arena_ = TakeArena(num_threads);
}

ArenaLease::~ArenaLease() {
  if (!is_nested_) GiveBack(arena_);
}

tbb::task_arena& ArenaLease::Get() const {
  return arena_->arena;
}

ArenaLease::Range::Range(const ArenaLease& lease) : before_(entered_arena) {
  entered_arena = lease.arena_;
}

ArenaLease::Range::~Range() {
  entered_arena = before_;
}

void ReleaseIdleArenas() {
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
