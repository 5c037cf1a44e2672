#include "zelsolver/zelsolver.h"

#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/parallel_reduce.h>
#include <tbb/task_arena.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <vector>

/// A host that uses oneTBB itself, and calls the library from its tasks.
namespace {

constexpr unsigned int kDesigns = 2000;
constexpr unsigned int kInputs = 3;
constexpr unsigned int kValues = 7;  // of a design: responses and criteria
constexpr int kTasks = 24;
constexpr auto kThreads = tbb::global_control::max_allowed_parallelism;

const char* project = nullptr;
std::atomic<int> num_failures{0};

void Check(bool is_right, const char* what) {
  if (is_right) return;
  std::fprintf(stderr, "%s: %s\n", what, dzel2_getLastError());
  ++num_failures;
}

std::vector<double> Inputs(int task) {
  std::vector<double> inputs(std::size_t{kInputs} * kDesigns);
  for (std::size_t i = 0; i < inputs.size(); ++i)
    inputs[i] =
        0.1 + 1e-4 * static_cast<double>((i * 7919 + static_cast<std::size_t>(task)) % 8009);
  return inputs;
}

std::vector<double> Solve(int task) {
  const std::vector<double> inputs = Inputs(task);
  std::vector<double> out(std::size_t{kValues} * kDesigns, -1.0);
  const int status = dzel2_solve(project, kDesigns, inputs.data(), kInputs * kDesigns,
                                 ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA,
                                 out.data(), kValues * kDesigns);
  Check(status == 0, "solve");
  return out;
}

/// The calls of all tasks, some of them under a lock of the host's, while the project is closed time
/// and again: a thread that took up another of these tasks inside its call would lock twice.
void SolveInTasks(const std::vector<std::vector<double>>& expected, const char* where) {
  std::mutex mutex;
  tbb::parallel_for(
      tbb::blocked_range<int>(0, kTasks, 1),
      [&](const tbb::blocked_range<int>& tasks) {
        for (int task = tasks.begin(); task < tasks.end(); ++task) {
          std::unique_lock<std::mutex> lock(mutex, std::defer_lock);
          if (task % 3 == 0) lock.lock();
          Check(Solve(task) == expected[static_cast<std::size_t>(task)], where);
          if (task % 7 == 0) Check(dzel2_cleanup() == 0, "cleanup");
        }
      },
      tbb::simple_partitioner());
}

/// Calls from tasks that the host has cancelled are calls like others.
void SolveWhileCancelled(const std::vector<std::vector<double>>& expected) {
  tbb::task_group_context context;
  const auto solve = [&](int task) {
    context.cancel_group_execution();
    Check(Solve(task) == expected[static_cast<std::size_t>(task)], "cancelled");
  };
  tbb::parallel_for(0, kTasks, solve, context);
}

void Work(const char* where) {
  const int sum = tbb::parallel_reduce(
      tbb::blocked_range<int>(0, 100000), 0,
      [](const tbb::blocked_range<int>& range, int part) {
        return part + range.end() - range.begin();
      },
      [](int a, int b) { return a + b; });
  Check(sum == 100000, where);
}

}  // namespace

/// Ends with the number of failures; by a signal instead of a deadlock. Argument: a project.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  project = argv[1];
  alarm(100);
  tbb::task_scheduler_handle scheduler{tbb::attach{}};
  setenv("ZELSOLVER_NUM_THREADS", "1", 1);
  std::vector<std::vector<double>> expected;
  for (int task = 0; task < kTasks; ++task) expected.push_back(Solve(task));

  for (const char* number : {"2", "5"}) {
    setenv("ZELSOLVER_NUM_THREADS", number, 1);
    for (const std::size_t limit : {1, 2, 8}) {
      const tbb::global_control control(kThreads, limit);
      SolveInTasks(expected, "tasks");
      Work("between");
      tbb::task_arena(static_cast<int>(limit)).execute([&] { SolveInTasks(expected, "arena"); });
      SolveWhileCancelled(expected);
      Check(
          tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism) == limit,
          "limit");
    }
  }
  Check(dzel2_cleanup() == 0, "cleanup");
  Work("after");
  Check(tbb::finalize(scheduler, std::nothrow), "finalize");
  Check(Solve(0) == expected[0], "again");
  return num_failures;
}
