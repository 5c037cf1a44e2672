// make_seeds DIRECTORY: writes DIRECTORY/project, DIRECTORY/archive and DIRECTORY/records, small
// inputs of their targets.

#include "archive/archive_flags.h"
#include "archive/instantiate.h"
#include "archive/portable_oarchive.h"
#include "design/designs/design_manager.h"
#include "design/parameters/parameter_manager.h"
#include "design/parameters/random_conversion.h"
#include "literature/plate_project.h"
#include "project/file/project_file.h"
#include "seeds.h"
#include "stochastics/rv_factory.h"
#include "support/values.h"

#include <boost/filesystem/operations.hpp>

#include <exception>
#include <fstream>
#include <iostream>
#include <string>
#include <typeinfo>
#include <vector>

namespace {

namespace fs = boost::filesystem;
using corvath::algorithm::RV;
using corvath::algorithm::RVFactory;
using corvath::algorithm::datatypes::CDesignEntry;
using corvath::algorithm::datatypes::Design;
using corvath::algorithm::datatypes::DeterministicProperties;
using corvath::algorithm::datatypes::Parameter;
using corvath::algorithm::datatypes::ParameterManager;
using corvath::algorithm::datatypes::RandomProperties;
using corvath::algorithm::datatypes::SaveProjectFile;
using corvath::algorithm::datatypes::SurrogateInfo;
using corvath::algorithm::datatypes::VRDB;

/// The project with few designs, so that an input is short.
VRDB MakeProject(std::size_t num_designs) {
  VRDB project = literature::MakePlateProject();
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

std::vector<double> ToNumbers(const Eigen::VectorXd& vector) {
  return {vector.begin(), vector.end()};
}

/// The ways in which a project gives the numbers of a distribution.
enum Given { kMoments, kParameters, kVariation, kNothing };

Parameter MakeRandom(const RV& variable, Given given, bool mixed) {
  RandomProperties properties;
  properties.SetType(variable.GetTypeId());
  properties.SetKind(1);
  if (given == kParameters) properties.SetParams(ToNumbers(variable.GetParameters()));
  if (given == kMoments) properties.SetMoments(ToNumbers(variable.GetStats()));
  if (given == kVariation) properties.SetCov(0.125);
  Parameter parameter(variable.GetTypeName());
  if (mixed) parameter.SetDeterministicProperty(DeterministicProperties::Continuous(0.0, 2.0));
  parameter.SetRandomProperties(properties);
  parameter.SetReferenceValue(CDesignEntry(0.5), /*convert=*/true);
  return parameter;
}

/// A parameter of each distribution that can be given so; neighbours are correlated.
ParameterManager MakeRandoms(Given given, bool mixed, double correlation) {
  ParameterManager manager;
  std::wstring before;
#define ZEL_TYPE(Class, name, id) id,
  for (const int type : {ZEL_DISTRIBUTIONS(ZEL_TYPE)}) {
#undef ZEL_TYPE
    const Parameter parameter = MakeRandom(*RVFactory::GetInstance().Create(type), given, mixed);
    try {
      ParameterToRV(parameter);
    } catch (const std::exception&) {
      continue;
    }
    manager.AddParameter(parameter);
    if (correlation != 0.0 && !before.empty())
      manager.GetCoherences().Set(before, parameter.GetName(), correlation);
    before = parameter.GetName();
  }
  return manager;
}

void WriteRecord(const fs::path& path, const ParameterManager& value) {
  std::ofstream stream(path.string(), std::ios::binary);
  stream << typeid(value).name() << '\n';
  corvath::portable_binary_oarchive archive(stream);
  archive << value;
}

void WriteRecords(const fs::path& directory) {
  fs::create_directories(directory);
  WriteRecord(directory / "random_moments", MakeRandoms(kMoments, false, 0.0));
  WriteRecord(directory / "random_parameters", MakeRandoms(kParameters, true, 0.125));
  WriteRecord(directory / "random_variation", MakeRandoms(kVariation, true, 0.0));
  WriteRecord(directory / "random_default", MakeRandoms(kNothing, false, -0.0625));
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
    WriteRecords(fs::path(argv[1]) / "records");
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_seeds: " << error.what() << '\n';
    return 1;
  }
}
