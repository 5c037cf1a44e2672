#include "end_to_end.h"

#include <sys/stat.h>
#include <unistd.h>

namespace end_to_end {
namespace {

using testing::HasSubstr;

class BadInput : public EndToEnd {
 protected:
  /// Writes `bytes` where a test may leave them.
  static std::string Write(const std::string& name, const std::string& bytes) {
    support::WriteFile(Project(name), bytes);
    return Project(name);
  }
};

TEST_F(BadInput, NullPointersEndInAStatusAndAText) {
  double values[20];
  unsigned int counts[8];
  char* names = nullptr;
  const double* const in = kInside.data();
  const std::pair<const char*, std::function<int()>> cases[] = {
      {"dimensions", [&] { return dzel2_getDimensions(path_, 1, nullptr, 1); }},
      {"number of inputs", [&] { return dzel_getDimensions(path_, nullptr, counts); }},
      {"number of outputs", [&] { return dzel_getDimensions(path_, counts, nullptr); }},
      {"names", [&] { return dzel2_getNames(path_, 1, nullptr); }},
      {"names", [&] { return dzel_getOutputNamesWithDelimiter(path_, nullptr, ";"); }},
      {"bounds", [&] { return dzel2_getInputBounds(path_, nullptr); }},
      {"bounds", [&] { return dzel_allocate_and_getInputBounds(path_, nullptr); }},
      {"bounds", [&] { return dzel2_getInputBoundsPerParameter(path_, "x", nullptr); }},
      {"parameter name", [&] { return dzel2_getInputBoundsPerParameter(path_, nullptr, values); }},
      {"reference value", [&] { return dzel2_getReferenceValuePerParameter(path_, "x", nullptr); }},
      {"parameter name",
       [&] { return dzel2_getReferenceValuePerParameter(path_, nullptr, values); }},
      {"CoP values", [&] { return dzel2_getCoPValuesPerResponse(path_, "mass", nullptr); }},
      {"response name", [&] { return dzel2_getCoPValuesPerResponse(path_, nullptr, values); }},
      {"filtered states",
       [&] { return dzel_allocate_and_getFilteredStatesPerResponse(path_, "mass", nullptr); }},
      {"response name", [&] { return dzel_getFilteredStatesPerResponse(path_, nullptr, counts); }},
      {"inputs", [&] { return dzel2_solve(path_, 2, nullptr, 6, 2, values, 10); }},
      {"output array", [&] { return dzel2_solve(path_, 2, in, 6, 2, nullptr, 10); }},
      {"output array", [&] { return dzel_solve(path_, 2, in, nullptr); }},
      {"inputs", [&] { return dzel_solve(path_, 2, nullptr, values); }},
      {"solution", [&] { return dzel_allocate_and_solve(path_, 2, in, nullptr); }},
      {"response name",
       [&] { return dzel2_get_per_response(path_, 2, in, 6, nullptr, 2, values, 6); }},
      {"inputs",
       [&] { return dzel2_get_per_response(path_, 2, nullptr, 6, "mass", 2, values, 6); }},
      {"output array", [&] { return dzel_errors_per_response(path_, 2, in, "mass", nullptr); }},
  };
  for (const auto& [what, call] : cases) {
    const int status = call();
    EXPECT_TRUE(status == 1 || status == 2) << what;
    EXPECT_EQ(LastError(),
              std::string("Error in Zelsolver API: The pointer to the ") + what + " is null.");
  }
  EXPECT_EQ(names, nullptr);
}

TEST_F(BadInput, PathsThatAreNoProject) {
  const std::string empty = Write("empty.vrdb", "");
  const std::string text = Write("text.vrdb", "This is no project, but longer than a header.\n");
  for (const std::string& path :
       {Project(""), std::string("/no/such/file"), std::string("/dev/zero"),
        std::string("\xff\xfe\x80.vrdb"), std::string(), empty, text, Project("no_models.vrdb"),
        std::string(300, 'a')}) {
    EXPECT_EQ(dzel2_hasSurrogate(path.c_str()), 2) << path;
    EXPECT_NE(LastError(), "");
  }
  const std::string unreadable = Write("unreadable.vrdb", support::ReadFile(project_));
  ASSERT_EQ(chmod(unreadable.c_str(), 0), 0);
  if (geteuid() != 0) {  // root reads it all the same
    EXPECT_EQ(dzel2_hasSurrogate(unreadable.c_str()), 2);
    EXPECT_THAT(LastError(), HasSubstr("Error while reading"));
  }
  std::remove(unreadable.c_str());
}

TEST_F(BadInput, TheLastErrorIsUtf8WhateverItQuotes) {
  double value = 0.0;
  EXPECT_EQ(dzel2_getReferenceValuePerParameter(path_, "a\xe4\xff", &value), 2);
  EXPECT_EQ(LastError(), "Parameter (a\xef\xbf\xbd\xef\xbf\xbd) not found.");
}

TEST_F(BadInput, NonAsciiPathsOpen) {
  EXPECT_EQ(dzel2_hasSurrogate(Project("Tr\xc3\xa4ger \xe6\xa2\x81.vrdb").c_str()), 0)
      << LastError();
}

}  // namespace
}  // namespace end_to_end
