#include "end_to_end.h"

namespace end_to_end {
namespace {

using testing::HasSubstr;

class Examples : public EndToEnd {};

TEST_F(Examples, TheCallersPrintTheProject) {
  const auto c = RunCommand("'" TEST_C_CALLER "' '" + project_ + "'");
  EXPECT_EQ(c.second, 0);
  EXPECT_THAT(c.first, HasSubstr("y                              -1            1            0\n"));
  EXPECT_THAT(c.first, HasSubstr("mass                          0.9         10.5\n"));
  EXPECT_THAT(c.first, HasSubstr("stress[2]                      -1          7.5\n"));

  EXPECT_EQ(RunCommand("'" TEST_CPP_CALLER "' '" + project_ + "'"), c);

  // Python pads a name by characters, C by bytes: only blanks may differ.
  const auto python = RunCommand(
      "ZELSOLVER_LIBRARY='" TEST_LIBRARY "' python3 '" TEST_PYTHON_CALLER "' '" + project_ + "'");
  EXPECT_EQ(python.second, 0);
  const auto without_blanks = [](std::string text) {
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    return text;
  };
  EXPECT_EQ(without_blanks(python.first), without_blanks(c.first));
}

TEST_F(Examples, TheCallersSayWhatFailed) {
  for (const std::string command :
       {"'" TEST_C_CALLER "'", "'" TEST_CPP_CALLER "'",
        "ZELSOLVER_LIBRARY='" TEST_LIBRARY "' python3 '" TEST_PYTHON_CALLER "'"}) {
    const auto result = RunCommand(command + " /no/such/file 2>&1");
    EXPECT_NE(result.second, 0);
    EXPECT_THAT(result.first, HasSubstr("/no/such/file: Initializing new solver failed."));
  }
}

}  // namespace
}  // namespace end_to_end
