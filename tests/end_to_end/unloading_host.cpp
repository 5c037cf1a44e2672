#include "zelsolver/zelsolver.h"

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <signal.h>
#include <sys/time.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

/// A host that loads, uses and unloads the library time and again, while a timer interrupts it. A
/// second thread calls as well, and outlives each unloading.
namespace {

constexpr int kRounds = 20;
constexpr unsigned int kDesigns = 5000;
constexpr unsigned int kInputs = 3;
constexpr unsigned int kOutputs = 5;
constexpr long kGrowth = 100000;  // bytes of the heap in all rounds behind the second

int num_failures = 0;
std::atomic<int> num_alarms{0};  // any thread may take an alarm

void Check(bool is_right, const char* what, int round) {
  if (is_right) return;
  std::fprintf(stderr, "%s in round %d\n", what, round);
  ++num_failures;
}

/// Runs one function at a time.
class Second {
 public:
  ~Second() {
    Run({});
    thread_.join();
  }
  void Run(const std::function<void()>& task) {
    task_ = &task;
    while (task_ != nullptr) std::this_thread::yield();
  }

 private:
  void Work() {
    for (bool goes_on = true; goes_on;) {
      const std::function<void()>* const task = task_;
      if (task == nullptr) {
        std::this_thread::yield();
        continue;
      }
      goes_on = *task != nullptr;
      if (goes_on) (*task)();
      task_ = nullptr;
    }
  }

  std::atomic<const std::function<void()>*> task_{nullptr};
  std::thread thread_{[this] { Work(); }};
};

template <class Pointer>
void Find(void* library, const char* name, Pointer& function) {
  function = reinterpret_cast<Pointer>(dlsym(library, name));
}

std::ptrdiff_t Count(const char* directory) {
  return std::distance(std::filesystem::directory_iterator(directory), {});
}

struct Held {
  std::ptrdiff_t files;
  long heap;
};

Held Measure() {
  return {Count("/proc/self/fd"), static_cast<long>(mallinfo2().uordblks)};
}

}  // namespace

/// Ends with the number of failures. Arguments: the library, a project.
int main(int argc, char** argv) {
  if (argc != 3) return 2;
  setenv("ZELSOLVER_NUM_THREADS", "4", 1);
  Second second;
  std::vector<double> inputs(std::size_t{kInputs} * kDesigns);
  for (std::size_t i = 0; i < inputs.size(); ++i)
    inputs[i] = 0.1 + 1e-4 * static_cast<double>(i % 8009);
  std::vector<double> expected;
  Held before{};
  for (int round = 0; round < kRounds; ++round) {
    struct sigaction action {};
    action.sa_handler = [](int) { ++num_alarms; };
    action.sa_flags = round % 2 == 0 ? SA_RESTART : 0;
    sigaction(SIGALRM, &action, nullptr);
    const itimerval each_millisecond{{0, 1000}, {0, 1000}};
    setitimer(ITIMER_REAL, &each_millisecond, nullptr);

    void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return std::fprintf(stderr, "%s\n", dlerror());
    const auto threads_before = Count("/proc/self/task");
    decltype(&dzel2_getDimensions) dimensions = nullptr;
    decltype(&dzel2_solve) solve = nullptr;
    decltype(&dzel2_cleanup) cleanup = nullptr;
    Find(library, "dzel2_getDimensions", dimensions);
    Find(library, "dzel2_solve", solve);
    Find(library, "dzel2_cleanup", cleanup);
    unsigned int num_inputs = 0;
    Check(dimensions(argv[2], ZEL_INPUTS, &num_inputs, 1) == 0 && num_inputs == kInputs, "opening",
          round);
    if (round == 0)
      Check(Count("/proc/self/task") == threads_before, "opening starts a thread", round);
    const auto work = [&] {
      std::vector<double> out(std::size_t{kOutputs} * kDesigns);
      Check(
          solve(argv[2], kDesigns, inputs.data(), kInputs * kDesigns,
                ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES, out.data(), kOutputs * kDesigns) == 0,
          "solving", round);
      if (expected.empty()) expected = out;
      Check(out == expected, "results", round);
    };
    work();
    second.Run(work);
    if (round % 3 == 0) cleanup();
    dlclose(library);
    Check(dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) == nullptr, "still loaded", round);

    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    if (round == 1) before = Measure();
  }
  const Held after = Measure();
  Check(num_alarms > 0, "no alarm", kRounds);
  Check(after.files == before.files, "open files", kRounds);
  Check(after.heap < before.heap + kGrowth, "heap", kRounds);
  return num_failures;
}
