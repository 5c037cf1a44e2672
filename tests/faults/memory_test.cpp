// Memory runs out at the n-th allocation of a call through the C interfaces: the call fails and says
// so, or succeeds with the same numbers; nothing is lost, and the next call works.
// ZEL_EVERY_ALLOCATION=1 tries each n, in place of the first ones and a sample of the others. The call
// is forked where the allocation fails: no trial repeats what comes before, and a crash is told with
// its n. It runs on one thread for that.

#include "support/testing.h"
#include "zelsolver/study.h"
#include "zelsolver/zelsolver.h"

#include <Eigen/Core>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t n, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

/// One run of the call: the allocations from `first` to `last` fail.
struct Trial {
  long first;
  long last;
  int status;  ///< of the process, as waitpid has it
};

std::atomic<long> num_allocations{0};
std::atomic<long> num_blocks{0};  ///< that are allocated now
long first_failure = 0;
long last_failure = -1;
/// The next allocation to fork at; 0 for none.
long next_fork = 0;
long NextFork(long number);  ///< after that one
std::array<Trial, 10> failed_trials;
std::size_t num_failed_trials = 0;

/// Once alone, and with all that follow. True in the children, in which the allocation fails.
bool ForkTrials(long number) {
  for (const long last : {number, LONG_MAX}) {
    const pid_t child =
        _Fork();  // without the libraries' handlers: they take locks that the call holds
    if (child == 0) {
      next_fork = 0;
      first_failure = number;
      last_failure = last;
      return true;
    }
    Trial trial{number, last, -1};
    if (waitpid(child, &trial.status, 0) == child && trial.status == 0) continue;
    if (num_failed_trials < failed_trials.size()) failed_trials[num_failed_trials] = trial;
    ++num_failed_trials;
  }
  next_fork = NextFork(number);
  return false;
}

bool Fails() {
  const long number = ++num_allocations;
  if (number == next_fork) return ForkTrials(number);
  return number >= first_failure && number <= last_failure;
}

void* Count(void* block) {
  if (block != nullptr) ++num_blocks;
  return block;
}

void* Allocate(std::size_t alignment, std::size_t size) {
  return Fails() ? nullptr : Count(__libc_memalign(alignment, size));
}

}  // namespace

// In this program and the libraries that it loads, in place of the C library's.
#pragma GCC visibility push(default)
extern "C" {
void* malloc(std::size_t size) {
  if (!Fails()) return Count(__libc_malloc(size));
  errno = ENOMEM;
  return nullptr;
}
void* calloc(std::size_t n, std::size_t size) {
  return Fails() ? nullptr : Count(__libc_calloc(n, size));
}
void* realloc(void* block, std::size_t size) {
  if (Fails()) return nullptr;
  void* const moved = __libc_realloc(block, size);
  return block == nullptr ? Count(moved) : moved;
}
void* memalign(std::size_t alignment, std::size_t size) {
  return Allocate(alignment, size);
}
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return Allocate(alignment, size);
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const made = Allocate(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}
void free(void* block) {
  if (block != nullptr) --num_blocks;
  __libc_free(block);
}
}
#pragma GCC visibility pop

namespace {

constexpr unsigned int kInputs = 10;
constexpr unsigned int kDesigns = 3;
constexpr double kUntouched = 7.25;
constexpr char kNoFile[] = "/a/path/that/does/not/exist/and/is/long/enough/for/a/block/of.vrdb";

using Numbers = std::vector<double>;

Numbers Designs() {
  Numbers designs(kInputs * kDesigns);
  for (std::size_t i = 0; i < designs.size(); ++i) designs[i] = 8.0 + static_cast<double>(i % 11);
  return designs;
}

/// One use of a library: it gives a status and fills `out`.
struct Use {
  std::function<void()> prepare;          ///< makes what the call meets
  std::function<int(Numbers& out)> call;  ///< 0 for success; `out` has a size that fits
  std::function<const char*()> error;     ///< of a failed call
  std::function<void()> close;            ///< gives everything back
  std::size_t size;
};

/// Whether two results are the same to the bit.
bool AreSame(const Numbers& a, const Numbers& b) {
  return std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

constexpr const char* kFaults[] = {"",
                                   "success with other numbers",
                                   "failure with wrong numbers",
                                   "failure without a text",
                                   "the next call does not work",
                                   "a block is lost"};
enum Fault { kNone, kOtherNumbers, kWrongNumbers, kNoText, kNextCall, kLostBlock };

/// Of a child that waitpid has the status of.
const char* FaultText(int status) {
  const bool is_known =
      WIFEXITED(status) && static_cast<std::size_t>(WEXITSTATUS(status)) < std::size(kFaults);
  return is_known ? kFaults[WEXITSTATUS(status)] : "a signal, or the end of the process";
}

/// Whether a trial goes on to another call, which may be long.
bool TriesAgain(long number) {
  return number % 8 == 0;
}

/// What is wrong after a call with allocations that failed.
Fault FaultOfCall(const Use& use, int status, Numbers& out, const Numbers& expected) {
  if (status == 0 && !AreSame(out, expected)) return kOtherNumbers;
  // Blocks of a solve that were written before are right, and the rest is as it was.
  for (std::size_t i = 0; i < out.size(); ++i)
    if (status != 0 && std::memcmp(&out[i], &expected[i], sizeof(double)) != 0 &&
        out[i] != kUntouched)
      return kWrongNumbers;
  if (status != 0 && (use.error() == nullptr || *use.error() == '\0')) return kNoText;
  std::fill(out.begin(), out.end(), kUntouched);
  if (TriesAgain(first_failure) && (use.call(out) != 0 || !AreSame(out, expected)))
    return kNextCall;
  return kNone;
}

long start_of_call = 0;

/// The first ones of a call, then ever sparser.
long NextFork(long number) {
  if (std::getenv("ZEL_EVERY_ALLOCATION") != nullptr) return number + 1;
  const long n = number - start_of_call;
  return number + std::max(1L, n / 20 + (n * 7) % 3);
}

void TryAll(const char* name, const Use& use) {
  SCOPED_TRACE(name);
  Numbers expected(use.size, kUntouched);
  Numbers out(use.size, kUntouched);
  dzel2_hasSurrogate(kNoFile);  // the text of an error keeps its block
  zelstudy_result* none = nullptr;
  zelstudy_hash(kNoFile, &none);
  for (int warm = 0; warm < 2; ++warm) {
    use.prepare();
    ASSERT_EQ(use.call(expected), 0) << use.error();
    use.close();
  }
  const long baseline = num_blocks;
  use.prepare();
  num_failed_trials = 0;
  start_of_call = num_allocations;
  next_fork = start_of_call + 1;
  const int status = use.call(out);
  next_fork = 0;
  if (last_failure > 0) {  // a child
    last_failure = -1;
    const Fault fault = FaultOfCall(use, status, out, expected);
    use.close();
    _exit(fault == kNone && num_blocks > baseline ? kLostBlock : fault);
  }
  const long count = num_allocations - start_of_call;
  use.close();
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(AreSame(out, expected));
  EXPECT_GT(count, 10);
  for (std::size_t k = 0; k < std::min(num_failed_trials, failed_trials.size()); ++k) {
    const Trial& trial = failed_trials[k];
    ADD_FAILURE() << "allocation " << trial.first - start_of_call << " of " << count
                  << (trial.last == LONG_MAX ? " and all that follow: " : ": ")
                  << FaultText(trial.status);
  }
  EXPECT_EQ(num_failed_trials, 0U) << "of " << 2 * count;
}

const char* SolverError() {
  return dzel2_getLastError();
}

int Solve(Numbers& out) {
  static const Numbers designs = Designs();
  return dzel2_solve(TEST_SAMPLE, kDesigns, designs.data(), kInputs * kDesigns,
                     ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA, out.data(),
                     static_cast<unsigned int>(out.size()));
}

void Close() {
  dzel2_cleanup();
}

TEST(OutOfMemory, OfTheSolverIsAnErrorAndNothingIsLost) {
  setenv("ZELSOLVER_NUM_THREADS", "1", 1);
  unsigned int counts[3] = {};
  ASSERT_EQ(dzel2_getDimensions(TEST_SAMPLE, ZEL_INPUTS | ZEL_OUTPUTS | ZEL_CRITERIA, counts, 3),
            0);
  ASSERT_EQ(counts[0], kInputs);
  const std::size_t size = (counts[1] + counts[2]) * std::size_t{kDesigns};
  const auto open = [] {
    Numbers ignored(1000);
    Solve(ignored);
  };
  TryAll("open and solve", {Close, Solve, SolverError, Close, size});
  TryAll("solve", {open, Solve, SolverError, Close, size});
}

TEST(OutOfMemory, OfATrainingIsAnErrorAndNothingIsLost) {
  setenv("ZELSOLVER_NUM_THREADS", "1", 1);
  const Numbers x{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
  Numbers y;
  for (const double value : x) y.push_back(3.0 + value * value);
  const auto train = [&](Numbers& out) {
    zelstudy_table* table = nullptr;
    zelstudy_project* project = nullptr;
    zelstudy_result* result = nullptr;
    zelstudy_result* solved = nullptr;
    const double* values = nullptr;
    std::size_t rows = 0, columns = 0;
    int status = zelstudy_table_new(&table);
    if (status == 0) status = zelstudy_table_add_numbers(table, "x", x.data(), x.size());
    if (status == 0) status = zelstudy_table_add_numbers(table, "y", y.data(), y.size());
    if (status == 0)
      status = zelstudy_train(table, R"({"inputs": ["x"], "responses": ["y"], "budget": 0.01})",
                              nullptr, nullptr, &project, &result);
    if (status == 0)
      status = zelstudy_solve(project, nullptr, x.data(), x.size(), nullptr, nullptr, &solved);
    if (status == 0) status = zelstudy_result_array(solved, "responses", &values, &rows, &columns);
    if (status == 0) std::copy_n(values, rows * columns, out.begin());
    zelstudy_result_close(solved);
    zelstudy_result_close(result);
    zelstudy_project_close(project);
    zelstudy_table_close(table);
    return status;
  };
  const auto nothing = [] {};
  TryAll("train", {nothing, train, zelstudy_last_error, nothing, x.size()});
}

TEST(OutOfMemory, OfAnAnalysisIsAnErrorAndNothingIsLost) {
  setenv("ZELSOLVER_NUM_THREADS", "1", 1);
  static zelstudy_project* project = nullptr;
  const auto open = [] {
    ASSERT_EQ(zelstudy_project_open(TEST_SAMPLE, nullptr, &project), 0) << zelstudy_last_error();
  };
  const auto close = [] {
    zelstudy_project_close(project);
    project = nullptr;
  };
  using Call = std::function<int(zelstudy_result**)>;
  const auto brief = [](auto function, const char* options) -> Call {
    return [=](zelstudy_result** out) { return function(project, options, out); };
  };
  const auto longer = [](auto function, const char* options) -> Call {
    return [=](zelstudy_result** out) { return function(project, options, nullptr, nullptr, out); };
  };
  const Numbers designs = Designs();
  const std::pair<const char*, Call> calls[] = {
      {"solve",
       [&](zelstudy_result** out) {
         return zelstudy_solve(
             project, R"({"criteria": true, "errors": true, "densities": true, "gradients": true})",
             designs.data(), kDesigns, nullptr, nullptr, out);
       }},
      {"describe", brief(zelstudy_describe, R"({"candidates": true, "models": true})")},
      {"residuals", brief(zelstudy_residuals, "{}")},
      {"sample", brief(zelstudy_sample, R"({"scheme": "sobol-sequence", "n": 20})")},
      {"export", longer(zelstudy_export, R"({"format": "c"})")},
      {"optimize", longer(zelstudy_optimize, R"({"minimize": ["mass"], "starts": 2})")},
      {"front", longer(zelstudy_optimize, R"({"minimize": ["mass", "displacement"], "starts": 1,
                                              "points": 3, "limits": ["stress[0] <= 20"]})")},
      {"next", longer(zelstudy_optimize, R"({"minimize": ["mass"], "starts": 1, "next": 2})")},
      {"sensitivity", longer(zelstudy_sensitivity, R"({"over": "bounds", "n": 16})")},
      {"propagate", longer(zelstudy_propagate, R"({"distributions": ["area_1:normal(12, 0.6) "],
                                                   "model_error": true, "n": 16})")},
      {"report", longer(zelstudy_report, "{}")},
      {"evaluate", [](zelstudy_result** out) {
         return zelstudy_evaluate("sum(abs(x)) + 2*x[1]^2", R"({"x": [1, 2, 3, 4, 5]})", out);
       }}};
  for (const auto& [name, call] : calls) {
    const auto use = [call = call](Numbers& out) {
      zelstudy_result* result = nullptr;
      const int status = call(&result);
      if (status == 0)
        out[0] = static_cast<double>(std::hash<std::string_view>()(zelstudy_result_json(result)));
      zelstudy_result_close(result);
      return status;
    };
    TryAll(name, {open, use, zelstudy_last_error, close, 1});
  }
}

TEST(OutOfMemory, OfAMatrixThatChangesItsSizeLeavesItEmpty) {
  const auto check = [](auto matrix) {
    matrix.setOnes();
    first_failure = last_failure = num_allocations + 1;
    EXPECT_THROW(matrix.resize(3, 5), std::bad_alloc);
    EXPECT_EQ(matrix.size(), 0);
  };
  check(Eigen::MatrixXd(2, 4));
  check(Eigen::Array<int, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>(2, 4));
  check(Eigen::Matrix<double, 3, Eigen::Dynamic>(3, 2));
  check(Eigen::Matrix<double, Eigen::Dynamic, 5>(2, 5));
  last_failure = -1;
}

}  // namespace
