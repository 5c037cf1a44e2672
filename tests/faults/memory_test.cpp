// Memory runs out at the n-th allocation of a call through the C interfaces: the call fails and says
// so, or succeeds with the same numbers; nothing is lost, and the next call works.
// ZEL_EVERY_ALLOCATION=1 tries each n, in place of the first ones and a sample of the others.

#include "support/testing.h"
#include "zelsolver/study.h"
#include "zelsolver/zelsolver.h"

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t n, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

std::atomic<long> num_allocations{0};
std::atomic<long> num_blocks{0};  ///< that are allocated now
std::atomic<long> first_failure{0};
std::atomic<long> last_failure{-1};

bool Fails() {
  const long number = ++num_allocations;
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

/// What is wrong after the allocations from `first` to `last` failed in a call; "" for nothing.
const char* FaultOfCall(const Use& use, const Numbers& expected, long first, long last) {
  use.prepare();
  Numbers out(use.size, kUntouched);
  const Numbers before = out;
  const long start = num_allocations;
  first_failure = start + first;
  last_failure = start + last;
  const int status = use.call(out);
  last_failure = -1;
  if (status == 0 && !AreSame(out, expected)) return "success with other numbers";
  if (status != 0 && !AreSame(out, before)) {
    // Blocks of a solve that were written before are right, and the rest is as it was.
    for (std::size_t i = 0; i < out.size(); ++i)
      if (std::memcmp(&out[i], &expected[i], sizeof(double)) != 0 && out[i] != kUntouched)
        return "failure with wrong numbers";
  }
  if (status != 0 && (use.error() == nullptr || *use.error() == '\0'))
    return "failure without a text";
  out = before;
  if (use.call(out) != 0 || !AreSame(out, expected)) return "the next call does not work";
  return "";
}

/// Likewise, when everything has been given back.
const char* Fault(const Use& use, const Numbers& expected, long first, long last) {
  const long baseline = num_blocks;
  const char* const fault = FaultOfCall(use, expected, first, last);
  use.close();
  return *fault == '\0' && num_blocks > baseline ? "a block is lost" : fault;
}

/// Which n to try, of `count`: the first ones, then ever sparser.
std::vector<long> Sample(long count) {
  const bool every = std::getenv("ZEL_EVERY_ALLOCATION") != nullptr;
  std::vector<long> numbers;
  for (long n = 1; n <= count; n += every ? 1 : std::max(1L, std::min(n, count) / 20 + (n * 7) % 3))
    numbers.push_back(n);
  return numbers;
}

/// Children of this process, so that a crash is told with its n.
void TryAll(const char* name, const Use& use) {
  SCOPED_TRACE(name);
  Numbers expected(use.size, kUntouched);
  dzel2_hasSurrogate(kNoFile);  // the text of an error keeps its block
  zelstudy_result* none = nullptr;
  zelstudy_hash(kNoFile, &none);
  long count = 0;
  for (int warm = 0; warm < 2; ++warm) {
    use.prepare();
    const long start = num_allocations;
    ASSERT_EQ(use.call(expected), 0) << use.error();
    count = num_allocations - start;
    use.close();
  }
  ASSERT_GT(count, 10);
  for (const long n : Sample(count))
    for (const long last : {n, count * 10}) {  // once, and from then on
      int ends[2];
      ASSERT_EQ(pipe(ends), 0);
      const pid_t child = fork();
      if (child == 0) {
        const char* const fault = Fault(use, expected, n, last);
        _exit(write(ends[1], fault, std::strlen(fault)) < 0 ? 1 : 0);
      }
      close(ends[1]);
      char text[100] = "";
      EXPECT_GE(read(ends[0], text, sizeof text - 1), 0);
      close(ends[0]);
      int status = 0;
      ASSERT_EQ(waitpid(child, &status, 0), child);
      EXPECT_STREQ(text, "") << "allocation " << n << " to " << last << " of " << count;
      EXPECT_EQ(status, 0) << "allocation " << n << " to " << last << " of " << count;
    }
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

}  // namespace
