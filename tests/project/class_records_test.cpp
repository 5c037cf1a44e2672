#include "project/file/file_header.h"
#include "support/temporary_directory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace {

using corvath::algorithm::datatypes::ReadFileHeader;

/// The classes of the sample project in the order in which an archive meets them, with the export
/// keys of those behind base class pointers. The position is the class id: a class more or less
/// shifts all that follow, and with them every file.
const std::vector<std::string> kClasses{
    "VRDB",
    "ParameterManager",
    "list of Parameter",
    "Parameter",
    "RandomProperties",
    "vector of double",
    "list of pair of text and DeterministicProperties",
    "pair of text and DeterministicProperties",
    "DeterministicProperties",
    "CDesignEntry",
    "variant of an entry's alternatives",
    "vector of CDesignEntry",
    "UninitializedType",
    "map from MutableMember to bool",
    "CorrelationMatrix",
    "map from TriangularIndex to double",
    "DesignManager",
    "vector of Design",
    "Design",
    "CNVPSequence of CDesignEntry",
    "vector of pair of text and CDesignEntry",
    "pair of text and CDesignEntry",
    "Variant",
    "RunInfoContainer",
    "list of RunInfoMeta",
    "CHierachicalId",
    "vector of uint64",
    "CNVPSequence of Criterion",
    "vector of pair of text and Criterion",
    "pair of text and Criterion",
    "Criterion",
    "CriterionDescription",
    "CriterionValue",
    "Stats",
    "shared_ptr to AlgorithmInfo",
    "AlgorithmInfo",
    "map from text to SignalInfo",
    "list of text",
    "shared_ptr to DetailedInformationBase",
    "DetailedInformationBase",
    "corvath::algorithm::datatypes::AlgorithmInfo::ZELInformation",
    "map from text to vector of uint64",
    "pair of text and vector of uint64",
    "map from text to text",
    "pair of text and text",
    "SurrogateInfoContainer",
    "list of SurrogateInfo",
    "SurrogateInfo",
    "shared_ptr to SurrogateBase",
    "corvath::math::metamodel::LinearRegression",
    "SurrogateBase",
    "matrix of double",
    "column of double",
    "column of uint64",
    "shared_ptr to Transform",
    "corvath::math::transform::TransMinMax",
    "Transform",
    "LinearRegressionSettings",
    "SurrogateSettingsBase",
    "vector of bool",
    "vector of unsigned char",
    "AppraisalData",
    "map from text to uint64",
    "pair of text and uint64",
    "vector of CHierachicalId",
    "corvath::math::metamodel::OrdinaryKriging",
    "OrdinaryKrigingSettings",
    "corvath::math::transform::TransBoxCox",
    "corvath::math::metamodel::MovingLeastSquares",
    "MovingLeastSquaresSettings",
    "corvath::math::metamodel::SurrogateTPS",
};

/// One class record behind a pointer: class id, export key, tracking, class version.
struct Record {
  unsigned id;
  std::string key;
  unsigned tracked;
  unsigned version;
};

/// The 16-bit word at `place`: all numbers of these records need one.
unsigned WordAt(const std::string& bytes, std::size_t place) {
  return static_cast<unsigned char>(bytes[place]) +
         256u * static_cast<unsigned char>(bytes[place + 1]);
}

/// The records with an export key, in the order of the bytes.
std::vector<Record> FindRecords(const std::string& bytes) {
  constexpr std::string_view kNamespace = "corvath::";
  std::vector<Record> records;
  for (std::size_t at = bytes.find(kNamespace); at != std::string::npos;
       at = bytes.find(kNamespace, at + 1)) {
    const unsigned length = WordAt(bytes, at - 2);
    records.push_back({WordAt(bytes, at - 4), bytes.substr(at, length), WordAt(bytes, at + length),
                       WordAt(bytes, at + length + 2)});
  }
  return records;
}

TEST(ClassRecords, OfTheSampleProjectStandAtTheirPlaces) {
  std::istringstream stream(support::ReadFile(TEST_SAMPLE_PROJECT));
  ReadFileHeader(stream);
  const std::string archive(std::istreambuf_iterator<char>(stream), {});
  // Signature and format, library version, annotations; then the project: tracked, its class
  // version, its object id. No annotation stands in front of it.
  ASSERT_EQ(archive.substr(0, 14), std::string("KBX\4\x11\0\3\0\1\0\x0e\0\0\0", 14));

  const std::vector<Record> records = FindRecords(archive);
  const std::pair<const char*, unsigned> expected[] = {
      {"corvath::algorithm::datatypes::AlgorithmInfo::ZELInformation", 9},
      {"corvath::math::metamodel::LinearRegression", 1},
      {"corvath::math::transform::TransMinMax", 0},
      {"corvath::math::metamodel::OrdinaryKriging", 2},
      {"corvath::math::transform::TransBoxCox", 0},
      {"corvath::math::metamodel::MovingLeastSquares", 3},
      {"corvath::math::metamodel::SurrogateTPS", 0}};
  ASSERT_EQ(records.size(), std::size(expected));
  for (std::size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(records[i].key, expected[i].first);
    EXPECT_EQ(records[i].version, expected[i].second) << records[i].key;
    EXPECT_EQ(records[i].tracked, 1u) << records[i].key;
    ASSERT_LT(records[i].id, kClasses.size()) << records[i].key;
    EXPECT_EQ(kClasses[records[i].id], records[i].key);
  }
}

}  // namespace
