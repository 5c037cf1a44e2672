#include "literature/plate_project.h"
#include "project/file/project_file.h"

namespace {

using corvath::algorithm::datatypes::SaveProjectFile, corvath::algorithm::datatypes::VRDB;
using literature::MakePlateProject;

/// The project with the models of `keep` alone.
VRDB WithModels(const std::vector<std::wstring>& keep) {
  VRDB project = MakePlateProject();
  literature::KeepModels(project, keep);
  return project;
}

}  // namespace

/// Writes the projects of the tests into a directory.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string directory = std::string(argv[1]) + '/';
  SaveProjectFile(WithModels({L"flat"}), directory + "one_response.vrdb");
  SaveProjectFile(WithModels({L"stress[1]"}), directory + "one_element.vrdb");
  SaveProjectFile(WithModels({}), directory + "no_models.vrdb");
  VRDB without_mass = MakePlateProject();
  literature::SetModel(without_mass, L"mass", nullptr);
  SaveProjectFile(without_mass, directory + "missing_model.vrdb");
  SaveProjectFile(MakePlateProject(), directory + "zel_tenbar.vrdb");
  SaveProjectFile(MakePlateProject(), directory + "Tr\xc3\xa4ger \xe6\xa2\x81.vrdb");
  SaveProjectFile(MakePlateProject(), directory + "plate.vrdb");
}
