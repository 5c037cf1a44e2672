#pragma once

#include "zelsolver/zelsolver.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace examples {

/// Ends the program with the library's own text if a call of it failed.
inline void Check(int status) {
  if (status == ZEL_OK) return;
  std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, dzel2_getLastError());
  std::exit(1);
}

/// The names of the project's outputs, in the order of a solve.
inline std::vector<std::string> OutputNames(const char* path) {
  char* block = nullptr;
  Check(dzel2_getNames(path, ZEL_OUTPUTS, &block));
  std::vector<std::string> names;
  for (const char* name = block; *name != '\0'; name += names.back().size() + 1)
    names.emplace_back(name);
  dzel2_free(block);
  return names;
}

}  // namespace examples
