#pragma once

#include "literature/plate_formulas.h"
#include "support/files.h"
#include "support/testing.h"
#include "zelsolver/zelsolver.h"

#include <gmock/gmock.h>

#include <cstdio>

/// What the tests know about the projects that write_test_projects wrote.
namespace end_to_end {

inline std::string Project(const std::string& name = "plate.vrdb") {
  return TEST_PROJECTS + name;
}

using literature::PlateOutput;

constexpr unsigned int kInputs = 3;
constexpr unsigned int kOutputs = 5;
constexpr unsigned int kCriteria = 2;
constexpr char kThirdInput[] =
    "Gr\xc3\xb6\xc3\x9f"
    "e";

/// Two designs inside the bounds, input after input, and one outside.
constexpr unsigned int kDesigns = 2;
const std::vector<double> kInside{0.0, 1.5, 0.5, -0.25, 12.0, 18.0};
const std::vector<double> kOutside{0.0, 2.5, 0.5, -0.25, 12.0, 18.0};
constexpr char kViolation[] = "Value 2.5 of Parameter x violates bounds: [0, 2]";

/// Quadratics fitted to 40 values of polynomials of degree 2, with values up to 60.
constexpr double kFit = 1e-10;

inline std::string LastError() {
  const char* const text = dzel2_getLastError();
  return text != nullptr ? text : "";
}

/// The status of a call and, behind it, the text of its failure.
inline std::string Answer(int status) {
  return std::to_string(status) + " " + LastError();
}

/// What a shell command prints on its standard output, and its wait status.
inline std::pair<std::string, int> RunCommand(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {output, -1};
  char block[4096];
  for (std::size_t n; (n = fread(block, 1, sizeof block, pipe)) > 0;) output.append(block, n);
  return {output, pclose(pipe)};
}

/// Each test starts and ends without open projects.
class EndToEnd : public testing::Test {
 protected:
  EndToEnd() { dzel2_cleanup(); }
  ~EndToEnd() override { dzel2_cleanup(); }

  const std::string project_ = Project();
  const char* const path_ = project_.c_str();
};

}  // namespace end_to_end
