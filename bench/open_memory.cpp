// Peak memory of opening a project beside the size of its file, at most 2.5 times.
//
//     open_memory --make FILE   writes a project with 100 MB of matrices
//     open_memory FILE          opens it

#include "project/file/project_file.h"
#include "wide_project.h"
#include "zelsolver/zelsolver.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdio>
#include <cstring>

namespace {

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) * 1024e-6;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--make") == 0) {
    corvath::algorithm::datatypes::SaveProjectFile(bench::MakeWideProject(1000, 20, 54), argv[2]);
    return 0;
  }
  struct stat status {};
  if (argc != 2 || stat(argv[1], &status) != 0) {
    std::fprintf(stderr, "usage: open_memory [--make] FILE\n");
    return 2;
  }
  const double before = PeakMegabytes();
  if (dzel2_hasSurrogate(argv[1]) != ZEL_OK) {
    std::fprintf(stderr, "%s\n", dzel2_getLastError());
    return 1;
  }
  const double file = static_cast<double>(status.st_size) * 1e-6;
  std::printf("file %.1f MB, peak %.1f MB: %.2f times the file\n", file, PeakMegabytes() - before,
              (PeakMegabytes() - before) / file);
  return 0;
}
