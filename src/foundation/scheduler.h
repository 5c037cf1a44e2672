#pragma once

#include <cstddef>
#include <functional>

/// All that this library takes of oneTBB, below foundation/parallel.h. No function that it is given
/// may throw.
namespace corvath::utils {

/// `count`, or as many threads as the host lets oneTBB have. 1 once the process ends.
std::size_t LimitThreads(std::size_t count);

/// Calls `body(first, last)` for ranges that cover [0, count) once each.
/// @param one_by_one  whether each range has one element; otherwise they follow the threads
void RunRanges(std::size_t num_threads, std::size_t count, bool one_by_one,
               const std::function<void(std::size_t first, std::size_t last)>& body);

/// As ParallelPipeline() does.
void RunPipeline(std::size_t num_threads, std::size_t places,
                 const std::function<bool(std::size_t place)>& produce,
                 const std::function<void(std::size_t place)>& work,
                 const std::function<void(std::size_t place)>& consume);

/// Gives back all that no call uses. oneTBB ends its threads when nobody else uses it.
void ReleaseScheduler();

/// Whether this process was forked from one that had called: oneTBB's threads are not there, whatever
/// its bookkeeping says.
bool IsForkedFromWork();

}  // namespace corvath::utils
