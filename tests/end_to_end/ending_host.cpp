#include "zelsolver/zelsolver.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

const char* project = nullptr;

/// Ends the process at once with status 1 if the library does not work as ever, down to what a call
/// on many designs and one that fails need.
void UseAndClose(const char* place) {
  constexpr unsigned int kDesigns = 2000;
  const std::vector<double> inputs(3 * kDesigns, 0.5);
  std::vector<double> out(std::size_t{7} * kDesigns);
  const int solved = dzel2_solve(project, kDesigns, inputs.data(), 3 * kDesigns,
                                 ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES | ZEL_SOLVE_CRITERIA,
                                 out.data(), 7 * kDesigns);
  double* bounds = nullptr;
  const int found = dzel_allocate_and_getInputBounds(project, &bounds);
  const int refused = dzel2_hasSurrogate("/no/such/file");
  if (solved == 0 && out[0] == out[kDesigns - 1] && found == 0 && bounds[1] == 2.0 &&
      refused == 2 && dzel2_getLastError() != nullptr && dzel2_get_version_str() != nullptr &&
      dzel2_cleanup() == 0 && dzel2_getLastError() == nullptr)
    return;
  std::fprintf(stderr, "%s: %d %d %d\n", place, solved, found, refused);
  _exit(1);
}

struct Holder {
  ~Holder() { UseAndClose("global object"); }
} holder;

}  // namespace

/// Uses the library from everywhere where a process ends; all of it is registered before the first
/// call. Ends with 0. Argument: a project.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  project = argv[1];
  std::atexit([] { UseAndClose("exit handler"); });
  UseAndClose("main");
  return dzel2_hasSurrogate(project);
}
