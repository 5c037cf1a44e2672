// make_seeds DIRECTORY: writes DIRECTORY/project and DIRECTORY/archive, small inputs of their
// targets.

#include "archive/archive_flags.h"
#include "archive/instantiate.h"
#include "archive/portable_oarchive.h"
#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "project/file/project_file.h"
#include "seeds.h"
#include "support/plate_project.h"
#include "support/values.h"

#include <boost/filesystem/operations.hpp>

#include <exception>
#include <fstream>
#include <iostream>

namespace {

namespace fs = boost::filesystem;
using corvath::algorithm::datatypes::Design;
using corvath::algorithm::datatypes::SaveProjectFile;
using corvath::algorithm::datatypes::SurrogateInfo;
using corvath::algorithm::datatypes::VRDB;

/// The project with few designs, so that an input is short.
VRDB MakeProject(std::size_t num_designs) {
  VRDB project = support::MakePlateProject();
  std::vector<Design>& designs = project.GetDesignContainer().ModifyDesigns();
  designs.resize(num_designs);
  return project;
}

template <class T>
void WriteObject(const fs::path& path, fuzz::ArchivedKind kind, const T& value) {
  std::ofstream stream(path.string(), std::ios::binary);
  stream.put(static_cast<char>(kind));
  corvath::portable_binary_oarchive archive(stream);
  archive << boost::serialization::make_nvp("value", value);
}

void WriteProjects(const fs::path& directory) {
  fs::create_directories(directory);
  const VRDB project = MakeProject(3);
  SaveProjectFile(project, directory / "plate.vrdb");
  corvath::algorithm::datatypes::ProjectFileForm bare;
  bare.outer_header = false;
  SaveProjectFile(project, directory / "bare.vrdb", bare);
  bare.archive_flags = corvath::archive::kAnnotateStrings;
  SaveProjectFile(project, directory / "annotated.vrdb", bare);
  SaveProjectFile(VRDB(), directory / "empty.vrdb");
}

void WriteObjects(const fs::path& directory) {
  fs::create_directories(directory);
  const VRDB project = MakeProject(2);
  WriteObject(directory / "designs", fuzz::kDesigns, project.GetDesignContainer());
  WriteObject(directory / "parameters", fuzz::kParameters, project.GetParameterManager());
  WriteObject(directory / "scalar", fuzz::kValue, support::Scalar(1.5, 2.0));
  WriteObject(directory / "matrix", fuzz::kValue, support::Mat({{1.0, 2.0}, {3.0, {4.0, 1.0}}}));
  WriteObject(directory / "signal", fuzz::kValue, support::Sig({0.0, 1.0}, {{1.0, 2.0}}));
  fuzz::Containers containers{{1.0, 2.0},
                              {true, false},
                              {L"text"},
                              {"a", ""},
                              {7},
                              {{L"k", {1, -1}}},
                              2.5,
                              Eigen::MatrixXd::Ones(2, 2),
                              Eigen::VectorXd::Ones(3)};
  WriteObject(directory / "containers", fuzz::kContainers, containers);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: make_seeds DIRECTORY\n";
    return 2;
  }
  try {
    WriteProjects(fs::path(argv[1]) / "project");
    WriteObjects(fs::path(argv[1]) / "archive");
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
  }
}
