#pragma once

#include <tbb/task_arena.h>

#include <cstddef>

/// Where oneTBB runs the ranges of a parallel call.
namespace corvath::utils {

/// `count`, or as many threads as the host lets oneTBB have. 1 once the process ends.
std::size_t LimitThreads(std::size_t count);

struct WorkerArena;

/// An arena for one caller. No two callers share one: an arena has as many places as threads, and
/// who finds none waits, and meanwhile takes up what others left there. Holding a lock that those
/// need, it would never end. A call within a range stays in the arena of its range.
class ArenaLease {
 public:
  explicit ArenaLease(std::size_t num_threads);
  ArenaLease(const ArenaLease&) = delete;
  ArenaLease& operator=(const ArenaLease&) = delete;
  ~ArenaLease();

  tbb::task_arena& Get() const;

  /// Marks the calling thread as one that runs a range of `lease`, while it lives.
  class Range {
   public:
    explicit Range(const ArenaLease& lease);
    Range(const Range&) = delete;
    Range& operator=(const Range&) = delete;
    ~Range();

   private:
    WorkerArena* before_;
  };

 private:
  WorkerArena* arena_;
  bool is_nested_;
};

/// Gives back all arenas that no call uses. oneTBB ends its threads when the host does not use it.
void ReleaseIdleArenas();

/// Whether this process was forked from one that had arenas: oneTBB's threads are not there, whatever
/// its bookkeeping says.
bool IsForkedFromWork();

}  // namespace corvath::utils
