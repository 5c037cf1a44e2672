// Runs every target of fuzz/ over its folder of fuzz/corpus, in one process and without libFuzzer:
// replay FOLDER [SECONDS]. An input that aborts, crashes or takes longer (60 s) is named.

#include <boost/filesystem/operations.hpp>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

// The targets' LLVMFuzzerTestOneInput under names of their own; the build gives them.
#define ZEL_TARGETS(use)                                                                    \
  use(archive) use(calculator) use(csv) use(levels) use(macro_file) use(models) use(parser) \
      use(project) use(records) use(text)
#define ZEL_DECLARE(name) extern "C" int name##_target(const std::uint8_t* data, std::size_t size);
ZEL_TARGETS(ZEL_DECLARE)

namespace {

namespace fs = boost::filesystem;

struct Target {
  const char* name;
  int (*run)(const std::uint8_t* data, std::size_t size);
};

#define ZEL_LIST(name) {#name, name##_target},
constexpr Target kTargets[] = {ZEL_TARGETS(ZEL_LIST)};

char current[4096];

extern "C" void NameInput(int signal) {
  if (write(STDERR_FILENO, current, std::strlen(current)) < 0) _exit(EXIT_FAILURE);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

std::vector<fs::path> FilesOf(const fs::path& folder) {
  std::vector<fs::path> files{fs::directory_iterator(folder), fs::directory_iterator()};
  std::sort(files.begin(), files.end());
  return files;
}

void Run(const Target& target, const fs::path& file) {
  std::ifstream stream(file.string(), std::ios::binary);
  const std::string input(std::istreambuf_iterator<char>(stream), {});
  const std::string name = file.string() + '\n';
  current[name.copy(current, sizeof current - 1)] = '\0';
  // A block of the input's own size: reads beyond it are seen by those that watch memory.
  const std::vector<std::uint8_t> bytes(input.begin(), input.end());
  target.run(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::cerr << "usage: replay FOLDER [SECONDS]\n";
    return 2;
  }
  for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGBUS, SIGILL, SIGALRM})
    std::signal(signal, NameInput);
  const unsigned long seconds = argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 60;
  for (const Target& target : kTargets) {
    const std::vector<fs::path> files = FilesOf(fs::path(argv[1]) / target.name);
    for (const fs::path& file : files) {
      alarm(static_cast<unsigned int>(seconds));
      Run(target, file);
    }
    std::cout << target.name << ": " << files.size() << " inputs\n";
    if (files.empty()) return 1;
  }
  return 0;
}
