// Opening a project in a fresh process: peak memory beside the size of its file, at most 2.5 times,
// and processor time beside that of reading its bytes into fresh memory, at most 1.1 times.
//
//     open_memory --make FILE   writes a project with 100 MB of matrices
//     open_memory FILE          opens it
//     open_memory --read FILE   the baseline

#include "project/file/project_file.h"
#include "wide_project.h"
#include "zelsolver/zelsolver.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024e-6;
}

double ProcessorMilliseconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto milliseconds = [](const timeval& time) {
    return 1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
  };
  return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

bool ReadBytes(const char* path, std::size_t size) {
  const std::unique_ptr<char[]> bytes(new char[size]);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
  return file != nullptr && std::fread(bytes.get(), 1, size, file.get()) == size;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--make") == 0) {
    corvath::algorithm::datatypes::SaveProjectFile(bench::MakeWideProject(1000, 20, 54), argv[2]);
    return 0;
  }
  const bool bare = argc == 3 && std::strcmp(argv[1], "--read") == 0;
  const char* const path = argv[argc - 1];
  struct stat status {};
  if ((argc != 2 && !bare) || stat(path, &status) != 0) {
    std::fprintf(stderr, "usage: open_memory [--make | --read] FILE\n");
    return 2;
  }
  const double memory = PeakMegabytes();
  const double time = ProcessorMilliseconds();
  const bool done = bare ? ReadBytes(path, static_cast<std::size_t>(status.st_size))
                         : dzel2_hasSurrogate(path) == ZEL_OK;
  if (!done) {
    std::fprintf(stderr, "%s\n", bare ? path : dzel2_getLastError());
    return 1;
  }
  const double file = static_cast<double>(status.st_size) * 1e-6;
  const double peak = PeakMegabytes() - memory;
  std::printf("file %.1f MB, peak %.1f MB: %.2f times the file, processor time %.1f ms\n", file,
              peak, peak / file, ProcessorMilliseconds() - time);
  return 0;
}
