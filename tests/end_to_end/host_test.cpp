#include "end_to_end.h"

#include <cstdio>
#include <fstream>

namespace end_to_end {
namespace {

using testing::ElementsAre;

std::vector<std::string> LinesOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

class Host : public EndToEnd {};

TEST_F(Host, KeepsItsOwnOutputAndSeesTheLog) {
  // In the C locale, where wide standard streams would stop at the first non-ASCII character.
  const std::string no_project = "/no/such/Tr\xc3\xa4ger";
  const std::string missing = "ERROR: \"" + no_project + "\" does not exist";
  for (const std::string text : {"narrow", "wide"}) {
    const auto run =
        RunCommand("LC_ALL=C '" TEST_HOST "' '" + project_ + "' '" + no_project + "' " + text +
                   " >'" + Project("host.out") + "' 2>'" + Project("host.err") + "'");
    EXPECT_EQ(run.second, 0) << text;
    EXPECT_THAT(LinesOf(Project("host.out")),
                ElementsAre("print before", "stream before", "print between", "stream after"))
        << text;
    EXPECT_THAT(
        LinesOf(Project("host.err")),
        ElementsAre(missing, "error before", missing,
                    std::string("ERROR: Error in approximation: ") + kViolation, "error after"))
        << text;
  }
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

TEST_F(Host, CallsFromItsOwnTasks) {
  for (const std::string host : {TEST_TBB_HOST, TEST_TBB_COPY_HOST})
    EXPECT_EQ(RunCommand("'" + host + "' '" + project_ + "' 2>&1"), std::pair(std::string(), 0));
}

TEST_F(Host, UnloadsTimeAndAgainWhileATimerInterruptsIt) {
  EXPECT_EQ(RunCommand("'" TEST_UNLOADING_HOST "' '" TEST_LIBRARY "' '" + project_ + "' 2>&1"),
            std::pair(std::string(), 0));
}

}  // namespace
}  // namespace end_to_end
