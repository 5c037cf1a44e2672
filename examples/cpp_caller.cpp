// Opens a project and prints what it holds: inputs with their bounds and reference values, and the
// responses with their quality, as predicted at the reference values.
//
//     cpp_caller zel_tenbar.vrdb
#include <zelsolver/zelsolver.hpp>

#include <cstdio>
#include <vector>

namespace {

void PrintProject(const zelsolver::Project& project) {
  std::vector<double> design;
  const std::vector<zelsolver::Bounds> bounds = project.GetBounds();
  std::printf("%-20s %12s %12s %12s\n", "input", "lower", "upper", "reference");
  for (std::size_t i = 0; i < bounds.size(); ++i) {
    const char* const name = project.GetInputs()[i].c_str();
    design.push_back(project.GetReferenceValue(name));
    std::printf("%-20s %12g %12g %12g\n", name, bounds[i].lower, bounds[i].upper, design[i]);
  }

  // The reference design may lie outside of what the project's designs cover.
  const auto predicted = project.Solve(design, ZEL_SOLVE_EXTRAPOLATE | ZEL_SOLVE_RESPONSES);
  std::printf("\n%-20s %12s %12s\n", "response", "CoP", "predicted");
  for (std::size_t k = 0; k < predicted.size(); ++k) {
    const std::string& name = project.GetOutputs()[k];
    std::printf("%-20s %12g %12g\n", name.c_str(), project.GetCoPs(name).back(), predicted[k]);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s PROJECT.vrdb\n", argv[0]);
    return 2;
  }
  try {
    PrintProject(zelsolver::Project(argv[1]));
  } catch (const zelsolver::Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  zelsolver::Project::CloseAll();
  return 0;
}
