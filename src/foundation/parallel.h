#pragma once

#include <cstddef>
#include <functional>

namespace corvath::utils {

/// Threads that parallel work uses, the caller's included: what SetNumThreads says, else the
/// environment variable ZELSOLVER_NUM_THREADS (1 to 1024; anything else is ignored), else the
/// processors that the process may run on, and never more than these. 1 starts no thread ever.
int GetNumThreads();

/// @param num_threads  1 to 1024; 0 returns to the environment
/// @throws std::invalid_argument  anything else
void SetNumThreads(int num_threads);

/// Calls task(0), ..., task(count - 1), side by side on up to GetNumThreads() threads, and returns
/// when all are done. Tasks must not depend on each other. When one throws, those that have not begun
/// are left out, and the exception comes out here. May be called from a task.
void ParallelTasks(std::size_t count, const std::function<void(std::size_t)>& task);

}  // namespace corvath::utils
