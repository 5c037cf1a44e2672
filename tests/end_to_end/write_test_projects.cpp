#include "project/file/project_file.h"
#include "project/records/algorithm_info.h"
#include "project/records/zel_information.h"
#include "support/plate_project.h"

#include <exception>
#include <iostream>

namespace {

using corvath::algorithm::datatypes::SaveProjectFile;
using corvath::algorithm::datatypes::SurrogateInfo;
using corvath::algorithm::datatypes::SurrogateInfoContainer;
using corvath::algorithm::datatypes::VRDB;
using support::GetModels;

/// The project with the models of `keep` alone.
VRDB WithModels(const std::vector<std::wstring>& keep) {
  VRDB project = support::MakePlateProject();
  SurrogateInfoContainer kept;
  for (const SurrogateInfo& info : GetModels(project).GetSurrogateInfos())
    for (const std::wstring& name : keep)
      if (info.GetFullName() == name) kept.AddOrReplace(info);
  GetModels(project) = kept;
  return project;
}

/// The project whose first model, of "mass", isn't there.
VRDB WithoutFirstModel() {
  VRDB project = support::MakePlateProject();
  GetModels(project).Update([](SurrogateInfo& info) {
    if (info.GetFullName() == L"mass") info.SetSurrogate(nullptr);
  });
  return project;
}

}  // namespace

/// Writes the projects of the tests into a directory.
int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::string directory = std::string(argv[1]) + '/';
  try {
    SaveProjectFile(WithModels({L"flat"}), directory + "one_response.vrdb");
    SaveProjectFile(WithModels({L"stress[1]"}), directory + "one_element.vrdb");
    SaveProjectFile(WithModels({}), directory + "no_models.vrdb");
    SaveProjectFile(WithoutFirstModel(), directory + "missing_model.vrdb");
    SaveProjectFile(support::MakePlateProject(), directory + "zel_tenbar.vrdb");
    SaveProjectFile(support::MakePlateProject(), directory + "Tr\xc3\xa4ger \xe6\xa2\x81.vrdb");
    SaveProjectFile(support::MakePlateProject(), directory + "plate.vrdb");
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
