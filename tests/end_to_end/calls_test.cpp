#include "end_to_end.h"

#include <unistd.h>

namespace end_to_end {
namespace {

using testing::IsNull, testing::MatchesRegex;

class Calls : public EndToEnd {};

TEST_F(Calls, TellItsVersion) {
  EXPECT_THAT(dzel2_get_version_str(), MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+ \\([0-9]+\\)"));
  EXPECT_EQ(dzel_get_version_str(), dzel2_get_version_str());
}

TEST_F(Calls, TheLastErrorBelongsToTheLastCall) {
  EXPECT_THAT(dzel2_getLastError(), IsNull());
  EXPECT_EQ(dzel2_hasSurrogate("/no/such/file"), 2);
  EXPECT_STREQ(dzel2_getLastError(), "Initializing new solver failed.");
  EXPECT_EQ(dzel_getLastError(), dzel2_getLastError()) << "one for both generations";

  // These leave it as it is.
  EXPECT_EQ(dzel2_set_paths_for_custom_interface("a path", 2, nullptr), 4);
  EXPECT_EQ(dzel_set_paths_for_custom_interface(), 1);
  dzel2_get_version_str();
  EXPECT_STREQ(dzel2_getLastError(), "Initializing new solver failed.");

  EXPECT_EQ(dzel_hasSurrogate(path_), 0);
  EXPECT_THAT(dzel_getLastError(), IsNull());
  for (int (*const call)() : {+[] { return dzel2_free(nullptr); }, dzel2_cleanup, dzel_cleanup}) {
    EXPECT_EQ(dzel_hasSurrogate("/no/such/file"), 1);
    EXPECT_EQ(call(), 0);
    EXPECT_THAT(dzel_getLastError(), IsNull());
  }
}

TEST_F(Calls, ANullPathIsTheDefaultProjectInTheCurrentDirectory) {
  char before[4096];
  ASSERT_NE(getcwd(before, sizeof before), nullptr);
  ASSERT_EQ(chdir("/"), 0);
  EXPECT_EQ(Answer(dzel2_hasSurrogate(nullptr)), "2 Initializing new solver failed.");
  ASSERT_EQ(chdir(Project("").c_str()), 0);
  EXPECT_EQ(dzel2_hasSurrogate(nullptr), 0);
  EXPECT_EQ(dzel2_hasSurrogate("zel_tenbar.vrdb"), 0);
  ASSERT_EQ(chdir(before), 0);
}

TEST_F(Calls, AHashTiesAPathToItsFile) {
  const std::string mismatch = "File seems to be corrupt. Signature is invalid or missing";
  const std::string hash = RunCommand("sha512sum '" + project_ + "'").first.substr(0, 128);
  ASSERT_EQ(hash.size(), 128u);
  EXPECT_EQ(dzel2_hasSurrogate_hash(path_, "00"), 2);
  EXPECT_EQ(LastError(), mismatch);
  EXPECT_EQ(dzel2_hasSurrogate_hash(path_, hash.c_str()), 0);
  EXPECT_EQ(dzel2_hasSurrogate(path_), 2);
  EXPECT_EQ(LastError(), mismatch);
  EXPECT_EQ(dzel2_cleanup(), 0);
  EXPECT_EQ(dzel2_hasSurrogate_hash(path_, nullptr), 0);
  EXPECT_EQ(dzel_hasSurrogate_hash(path_, hash.c_str()), 1);
  EXPECT_EQ(dzel_cleanup(), 0);

  // Every form with a hash takes it to the registry.
  const char* const right = hash.c_str();
  unsigned int n[4];
  double values[40];
  double* buffer = nullptr;
  unsigned int* states = nullptr;
  char* names = nullptr;
  EXPECT_EQ(dzel2_getDimensions_hash(path_, 7, n, 3, right), 0);
  EXPECT_EQ(dzel_getDimensions_hash(path_, n, n + 1, right), 0);
  EXPECT_EQ(dzel2_getInputBounds_hash(path_, values, right), 0);
  EXPECT_EQ(dzel_getInputBounds_hash(path_, values, right), 0);
  EXPECT_EQ(dzel_allocate_and_getInputBounds_hash(path_, &buffer, right), 0);
  EXPECT_EQ(dzel2_getInputBoundsPerParameter_hash(path_, "x", values, right), 0);
  EXPECT_EQ(dzel_getInputBoundsPerParameter_hash(path_, "x", values, right), 0);
  EXPECT_EQ(dzel_allocate_and_getInputBoundsPerParameter_hash(path_, "x", &buffer, right), 0);
  EXPECT_EQ(dzel2_getReferenceValuePerParameter_hash(path_, "x", values, right), 0);
  EXPECT_EQ(dzel_getReferenceValuePerParameter_hash(path_, "x", values, right), 0);
  EXPECT_EQ(dzel2_getCoPValuesPerResponse_hash(path_, "mass", values, right), 0);
  EXPECT_EQ(dzel_getCoPValuesPerResponse_hash(path_, "mass", values, right), 0);
  EXPECT_EQ(dzel_allocate_and_getCoPValuesPerResponse_hash(path_, "mass", &buffer, right), 0);
  EXPECT_EQ(dzel2_getFilteredStatesPerResponse_hash(path_, "mass", n, right), 0);
  EXPECT_EQ(dzel_getFilteredStatesPerResponse_hash(path_, "mass", n, right), 0);
  EXPECT_EQ(dzel_allocate_and_getFilteredStatesPerResponse_hash(path_, "mass", &states, right), 0);
  const double* const in = kInside.data();
  EXPECT_EQ(dzel2_solve_hash(path_, 2, in, 6, 2, values, 10, right), 0);
  EXPECT_EQ(dzel_solve_hash(path_, 2, in, values, right), 0);
  EXPECT_EQ(dzel_solve_extrapolate_hash(path_, 2, in, values, 1, right), 0);
  EXPECT_EQ(dzel_allocate_and_solve_hash(path_, 2, in, &buffer, right), 0);
  EXPECT_EQ(dzel_allocate_and_solve_extrapolate_hash(path_, 2, in, &buffer, 1, right), 0);
  EXPECT_EQ(dzel2_get_per_response_hash(path_, 2, in, 6, "mass", 2, values, 6, right), 0);
  EXPECT_EQ(dzel_gradients_per_response_hash(path_, 2, in, "mass", values, right), 0);
  EXPECT_EQ(dzel_gradients_per_response_extrapolate_hash(path_, 2, in, "mass", values, 1, right),
            0);
  EXPECT_EQ(dzel_errors_per_response_hash(path_, 2, in, "mass", values, right), 0);
  EXPECT_EQ(dzel_errors_per_response_extrapolate_hash(path_, 2, in, "mass", values, 1, right), 0);
  EXPECT_EQ(dzel_density_per_response_hash(path_, 2, in, "mass", values, 2, right), 0);
  EXPECT_EQ(dzel_density_per_response_extrapolate_hash(path_, 2, in, "mass", values, 2, 1, right),
            0);
  const auto named = [&](int status) {
    EXPECT_EQ(status, 0) << LastError();
    dzel2_free(names);
  };
  named(dzel2_getNames_hash(path_, 1, &names, right));
  named(dzel2_getNamesWithDelimiter_hash(path_, 1, &names, ";", right));
  named(dzel_getInputNames_hash(path_, &names, right));
  named(dzel_getOutputNames_hash(path_, &names, right));
  named(dzel_getInputNamesWithDelimiter_hash(path_, &names, ";", right));
  named(dzel_getOutputNamesWithDelimiter_hash(path_, &names, ";", right));
}

}  // namespace
}  // namespace end_to_end
