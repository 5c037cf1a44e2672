// Prints the predictions of a project with ten inputs at the given design.
#include <zelsolver/zelsolver.h>

#include <array>
#include <cstdio>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
  if (argc != 12) return 2;
  std::array<double, 10> design{};
  std::array<double, 12> out{};
  for (int i = 0; i < 10; ++i) design[static_cast<std::size_t>(i)] = std::stod(argv[2 + i]);
  if (dzel2_solve(argv[1], 1, design.data(), design.size(), ZEL_SOLVE_RESPONSES, out.data(),
                  out.size()) != ZEL_OK) {
    std::cerr << dzel2_getLastError() << '\n';
    return 1;
  }
  for (const double value : out) std::printf("%.17g\n", value);
  return dzel2_cleanup();
}
