#include "end_to_end.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace end_to_end {
namespace {

using testing::UnorderedElementsAre;

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

class Host : public EndToEnd {};

TEST_F(Host, KeepsItsOwnOutputAndSeesTheLog) {
  // In the C locale, where wide standard streams would stop at the first non-ASCII character.
  ASSERT_EQ(std::system(("LC_ALL=C '" TEST_HOST "' '" + project_ + "' '/no/such/Tr\xc3\xa4ger' >'" +
                         Project("host.out") + "' 2>'" + Project("host.err") + "'")
                            .c_str()),
            0);
  EXPECT_THAT(LinesOf(Project("host.out")),
              UnorderedElementsAre("printf before", "cout before", "printf between", "cout between",
                                   "printf after", "cout after, 3 calls"));
  EXPECT_THAT(LinesOf(Project("host.err")),
              UnorderedElementsAre(
                  "cerr before", "ERROR: \"/no/such/Tr\xc3\xa4ger\" does not exist",
                  std::string("ERROR: Error in approximation: ") + kViolation, "fprintf after"));
}

TEST_F(Host, CallsFromExitHandlersAndDestructors) {
  const auto [output, status] = RunCommand("'" TEST_ENDING_HOST "' '" + project_ + "' 2>&1");
  EXPECT_EQ(status, 0) << output;
}

TEST_F(Host, LoadsTwoCopiesOfTheLibrary) {
  const std::string copy = Project("libcopy.so");
  ASSERT_EQ(RunCommand("cp '" TEST_LIBRARY "' '" + copy + "'").second, 0);
  for (const std::string scope : {"local", "global", "deepbind"}) {
    if (TEST_SANITIZED && scope == "deepbind") continue;  // the sanitizers refuse it
    const auto [output, status] =
        RunCommand("'" TEST_COPIES_HOST "' " + scope + " '" TEST_LIBRARY "' '" + copy + "' '" +
                   project_ + "' '" TEST_SAMPLE "' 2>&1");
    EXPECT_EQ(status, 0) << scope << '\n' << output;
  }
}

TEST_F(Host, TwoProcessesOpenOneFileAtOnce) {
  const std::string one = "'" TEST_HOST "' '" + project_ + "' /no/such/file 2>/dev/null";
  FILE* const first = popen(one.c_str(), "r");
  FILE* const second = popen(one.c_str(), "r");
  ASSERT_TRUE(first != nullptr && second != nullptr);
  for (FILE* const pipe : {first, second}) {
    std::string output;
    char block[256];
    for (std::size_t n; (n = fread(block, 1, sizeof block, pipe)) > 0;) output.append(block, n);
    EXPECT_EQ(pclose(pipe), 0);
    EXPECT_THAT(output, testing::HasSubstr("3 calls"));
  }
}

}  // namespace
}  // namespace end_to_end
