#include "foundation/parallel.h"

#include <tbb/blocked_range.h>
#include <tbb/info.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace corvath::utils {
namespace {

constexpr int kMostThreads = 1024;
std::atomic<int> chosen_threads{0};

int ThreadsOfEnvironment() {
  const char* text = std::getenv("ZELSOLVER_NUM_THREADS");
  if (!text) return 0;
  int number = 0;
  const char* end = text + std::strlen(text);
  const auto parsed = std::from_chars(text, end, number);
  const bool is_number = parsed.ec == std::errc() && parsed.ptr == end;
  return is_number && number >= 1 && number <= kMostThreads ? number : 0;
}

}  // namespace

int GetNumThreads() {
  // By affinity, not by the processors of the machine.
  const int most = std::clamp(tbb::info::default_concurrency(), 1, kMostThreads);
  const int chosen = chosen_threads > 0 ? chosen_threads.load() : ThreadsOfEnvironment();
  return chosen > 0 ? std::min(chosen, most) : most;
}

void SetNumThreads(int num_threads) {
  if (num_threads < 0 || num_threads > kMostThreads)
    throw std::invalid_argument("The number of threads lies between 1 and 1024.");
  chosen_threads = num_threads;
}

void ParallelTasks(std::size_t count, const std::function<void(std::size_t)>& task) {
  const int num_threads = GetNumThreads();
  if (num_threads == 1 || count < 2) {
    for (std::size_t k = 0; k < count; ++k) task(k);
    return;
  }
  tbb::task_arena arena(num_threads);
  arena.execute([&] {
    tbb::parallel_for(
        tbb::blocked_range<std::size_t>(0, count, 1),
        [&](const tbb::blocked_range<std::size_t>& range) {
          for (std::size_t k = range.begin(); k != range.end(); ++k) task(k);
        },
        tbb::simple_partitioner());
  });
}

}  // namespace corvath::utils
