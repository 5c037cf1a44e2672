// endurance A.vrdb B.vrdb SOLVES FILES [THREADS [PROCESSES]]: solves over many projects of few inputs
// that other threads and processes replace, open and close all the time. Each file is a copy of A or
// of B, so each result must be that of A or of B, to the bit. Then memory and descriptors of each
// process are compared with those after the first tenth. Status: 0; 1 with a line on standard error.

#include "zelsolver/zelsolver.h"

#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Numbers = std::vector<double>;

constexpr unsigned int kDesigns = 3;
constexpr long kOpenings = 200;          // calls between two closings of all, per thread
constexpr long kGrowth = 64;             // kB of blocks in use: caches of the C library
constexpr long kResidentGrowth = 16384;  // kB of pages that are used in part
std::atomic<long> num_wrong{0};
std::atomic<long> num_solved{0};

struct Variant {
  std::string bytes;
  Numbers designs;
  Numbers expected;
};

int Solve(const std::string& path, const Numbers& designs, Numbers& out) {
  return dzel2_solve(path.c_str(), kDesigns, designs.data(),
                     static_cast<unsigned int>(designs.size()),
                     ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA, out.data(),
                     static_cast<unsigned int>(out.size()));
}

Variant Read(const std::string& path) {
  Variant variant;
  std::ifstream stream(path, std::ios::binary);
  variant.bytes.assign(std::istreambuf_iterator<char>(stream), {});
  unsigned int counts[3] = {};
  if (dzel2_getDimensions(path.c_str(), ZEL_INPUTS | ZEL_OUTPUTS | ZEL_CRITERIA, counts, 3) != 0) {
    std::fprintf(stderr, "endurance: %s\n", dzel2_getLastError());
    std::exit(1);
  }
  for (unsigned int i = 0; i < counts[0] * kDesigns; ++i) variant.designs.push_back(1.0 + 0.25 * i);
  variant.expected.resize((counts[1] + counts[2]) * std::size_t{kDesigns});
  Solve(path, variant.designs, variant.expected);
  return variant;
}

void Replace(const std::string& path, const std::string& bytes) {
  static std::atomic<long> count{0};
  const std::string fresh = path + '.' + std::to_string(getpid()) + '.' + std::to_string(++count);
  std::ofstream(fresh, std::ios::binary) << bytes;
  fs::rename(fresh, path);
}

bool IsSame(const Numbers& a, const Numbers& b) {
  return std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
}

void Work(const Variant& a, const Variant& b, const std::string& folder, long files, long solves,
          unsigned int seed) {
  std::mt19937 random(seed);
  Numbers out(a.expected.size());
  for (long i = 0; i < solves; ++i) {
    const std::string path =
        folder + '/' + std::to_string(static_cast<long>(random()) % files) + ".vrdb";
    if (random() % 100 == 0) Replace(path, random() % 2 == 0 ? a.bytes : b.bytes);
    if (static_cast<long>(random()) % kOpenings == 0) dzel2_cleanup();
    if (Solve(path, a.designs, out) != 0 || !(IsSame(out, a.expected) || IsSame(out, b.expected)))
      ++num_wrong;
    ++num_solved;
  }
}

/// Of this process with nothing open.
struct Size {
  long used;      ///< kB of blocks
  long resident;  ///< kB
  long descriptors;
};

Size Measure() {
  dzel2_cleanup();
  malloc_trim(0);  // free pages between blocks; those behind the last one go by the threshold
  const struct mallinfo2 heaps = mallinfo2();
  std::ifstream statm("/proc/self/statm");
  long all = 0;
  long resident = 0;
  statm >> all >> resident;
  return {static_cast<long>((heaps.uordblks + heaps.hblkhd) / 1024),
          resident * sysconf(_SC_PAGESIZE) / 1024,
          std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator())};
}

int RunProcess(const Variant& a, const Variant& b, const std::string& folder, long files,
               long solves, long threads, unsigned int seed) {
  Size early{};
  for (const long part : {solves / 10, solves - solves / 10}) {
    early = Measure();
    std::vector<std::thread> workers;
    for (long t = 0; t < threads; ++t)
      workers.emplace_back(Work, std::cref(a), std::cref(b), folder, files, part / threads, ++seed);
    for (std::thread& worker : workers) worker.join();
  }
  const Size late = Measure();
  std::printf(
      "%ld solves, %ld wrong, %ld -> %ld kB in use, %ld -> %ld kB, %ld -> %ld descriptors\n",
      num_solved.load(), num_wrong.load(), early.used, late.used, early.resident, late.resident,
      early.descriptors, late.descriptors);
  std::fflush(stdout);
  return num_wrong == 0 && late.used <= early.used + kGrowth &&
                 late.resident <= early.resident + kResidentGrowth &&
                 late.descriptors <= early.descriptors
             ? 0
             : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 5) return 2;
  mallopt(M_TRIM_THRESHOLD, 128 * 1024);  // as it is at first; it would grow with the largest block
  const long solves = std::atol(argv[3]);
  const long files = std::atol(argv[4]);
  const long threads = argc > 5 ? std::atol(argv[5]) : 4;
  const long processes = argc > 6 ? std::atol(argv[6]) : 4;
  const Variant a = Read(argv[1]);
  const Variant b = Read(argv[2]);
  if (a.expected.size() != b.expected.size() || IsSame(a.expected, b.expected)) {
    std::fprintf(stderr,
                 "endurance: two projects of the same dimensions and other values, please\n");
    return 2;
  }
  std::string folder = (fs::temp_directory_path() / "endurance-XXXXXX").string();
  if (mkdtemp(folder.data()) == nullptr) return 1;
  for (long i = 0; i < files; ++i)
    Replace(folder + '/' + std::to_string(i) + ".vrdb", i % 2 == 0 ? a.bytes : b.bytes);
  for (long p = 0; p < processes; ++p)
    if (fork() == 0)
      _exit(RunProcess(a, b, folder, files, solves / processes, threads,
                       static_cast<unsigned int>(1000 * p)));
  int failed = 0;
  int status = 0;
  while (wait(&status) > 0)
    if (status != 0) failed = 1;
  fs::remove_all(folder);
  if (failed != 0) std::fprintf(stderr, "endurance: wrong results, or growth\n");
  return failed;
}
