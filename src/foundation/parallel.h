#pragma once

#include <cstddef>
#include <functional>

/// Work on all processors, carried by oneTBB. Nothing is started before the first call that has
/// something to share out.
///
/// A host may use oneTBB itself and call from its tasks: a call waits for nothing but its own ranges,
/// and its thread takes up nothing else meanwhile. Ranges round and trap as their caller does.
///
/// A body writes to places of its own only, so that results never depend on the number of threads.
/// Who calls must not hold a lock that a body takes.
namespace corvath::utils {

/// The number of threads of the next parallel call, at least 1: what SetNumThreads() asked for,
/// otherwise the environment variable ZELSOLVER_NUM_THREADS (1 to 1024; any other text counts as
/// none), otherwise the processors that the process may use. In a process forked after the first
/// parallel call it is 1, since threads do not survive the fork.
std::size_t GetNumThreads();

/// Overrides the environment for the whole process; 0 returns to it, more than 1024 is 1024.
void SetNumThreads(std::size_t count);

/// Gives back what oneTBB keeps for the next parallel call, so that a host that uses it, too, can shut
/// it down. The next call fetches it again.
void ReleaseThreads();

/// Calls `body(begin, end)` for consecutive ranges that cover [0, count) once each; all ranges
/// begin at multiples of `grain`. Up to one grain, and with one thread, that is one call on the
/// caller's thread. Calls may be nested.
/// @param grain  the least number of elements that are worth a thread; 0 counts as 1
/// @throws what `body` throws: of several failures the one of the lowest range, as if the ranges
///         had run in order. Ranges above one that failed are left out unless they have begun
void ParallelFor(std::size_t count, std::size_t grain,
                 const std::function<void(std::size_t begin, std::size_t end)>& body);

/// Calls `body(i)` for each i below `count`, one task each; otherwise as ParallelFor().
void ParallelTasks(std::size_t count, const std::function<void(std::size_t i)>& body);

/// Pieces of work that pass through places of the caller's, which bound their number:
/// `produce(place)` begins a piece, or returns false at the end; `work(place)` goes on with it, for
/// several pieces side by side; `consume(place)` ends it. `produce` and `consume` take the pieces in
/// one order, one at a time. All may run on any thread; with one thread, or one place, they run on
/// the caller's in turn.
/// @throws what one of the functions throws for the first piece that fails, once the pieces before
///         it were consumed; those behind it are not consumed
void ParallelPipeline(std::size_t places, const std::function<bool(std::size_t place)>& produce,
                      const std::function<void(std::size_t place)>& work,
                      const std::function<void(std::size_t place)>& consume);

}  // namespace corvath::utils
