#include "zelsolver/zelsolver.h"

#include <cstdio>
#include <iostream>

/// Prints on both streams in both manners, around calls that fail and that succeed, and ends with
/// the number of calls that went as they should. Arguments: a project, a path that isn't one.
int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::printf("printf before\n");
  std::cout << "cout before\n";
  std::cerr << "cerr before\n";
  int calls = 0;
  if (dzel2_hasSurrogate(argv[2]) == 2) ++calls;
  std::printf("printf between\n");
  std::cout << "cout between\n";
  const double outside[3] = {2.5, 0.0, 15.0};
  double out[5];
  if (dzel2_solve(argv[1], 1, outside, 3, 2, out, 5) == 2) ++calls;
  if (dzel2_solve(argv[1], 1, outside, 3, 3, out, 5) == 0) ++calls;
  std::fprintf(stderr, "fprintf after\n");
  std::printf("printf after\n");
  std::cout << "cout after, " << calls << " calls" << std::endl;
  return 0;
}
