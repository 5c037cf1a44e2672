// Prints the predictions of a project with ten inputs at the given design.
#include <zelsolver/zelsolver.hpp>

#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  if (argc != 12) return 2;
  try {
    const zelsolver::Project project(argv[1]);
    std::vector<double> design;
    for (int i = 2; i < argc; ++i) design.push_back(std::stod(argv[i]));
    for (const double value : project.Solve(design)) std::printf("%.17g\n", value);
  } catch (const zelsolver::Error& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  zelsolver::Project::CloseAll();
  return 0;
}
