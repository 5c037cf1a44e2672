// The sample project, whole and damaged, as a caller meets it.

#include "support/files.h"
#include "support/testing.h"
#include "zelsolver/zelsolver.h"

#include <sys/resource.h>

namespace {

constexpr unsigned int kNumOutputs = 12;

/// A file of the test's own that opens anew at each call.
class DamagedFile {
 public:
  /// Opens the bytes as a project and asks it everything. @return whether it opened
  bool Use(const std::string& bytes) {
    support::WriteFile(path_, bytes);
    const char* const path = path_.c_str();
    unsigned int dims[3] = {0, 0, 0};
    const bool opened = dzel2_getDimensions(path, 7, dims, 3) == ZEL_OK;
    if (opened) {
      const std::size_t m = dims[0];
      std::vector<double> bounds(2 * m);
      if (dzel2_getInputBounds(path, bounds.data()) != ZEL_OK) bounds.assign(2 * m, 10.0);
      std::vector<double> out(6 * dims[1] + dims[2]);
      dzel2_solve(path, 1, bounds.data(), static_cast<unsigned int>(bounds.size()), 31, out.data(),
                  static_cast<unsigned int>(out.size()));
      char* names = nullptr;
      if (dzel2_getNames(path, ZEL_OUTPUTS, &names) == ZEL_OK) dzel2_free(names);
    } else {
      EXPECT_NE(dzel2_getLastError(), nullptr);
    }
    dzel2_cleanup();
    return opened;
  }

 private:
  const std::string path_ = TEST_PROJECTS "damaged.vrdb";
};

/// Keeps the log of hundreds of refused files out of the report.
class Quiet {
 public:
  Quiet() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
  }
  ~Quiet() {
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
  }
};

long PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;
}

TEST(SampleProject, RandomInputsKeepTheirNamesAndColumns) {
  // The models' columns stand in the order of the random variables (the mixed parameters first), the
  // inputs in that of the parameters.
  const char* const path = TEST_SAMPLE_RANDOM;
  char* names = nullptr;
  ASSERT_EQ(dzel2_getNamesWithDelimiter(path, ZEL_INPUTS, &names, ","), ZEL_OK)
      << dzel2_getLastError();
  EXPECT_STREQ(names, "modulus,load_outer,load_inner,area_1,area_3,area_7");
  dzel2_free(names);
  double bounds[2];
  ASSERT_EQ(dzel2_getInputBoundsPerParameter(path, "modulus", bounds), ZEL_OK);
  EXPECT_GT(bounds[0], 8000.0);
  ASSERT_EQ(dzel2_getInputBoundsPerParameter(path, "area_7", bounds), ZEL_OK);
  EXPECT_TRUE(bounds[0] > 10.5 && bounds[1] < 13.5) << bounds[0] << ' ' << bounds[1];
  // All other areas are 12 in^2: six bars of 360 in, four of 360 sqrt(2) in, 0.1 lb/in^3.
  const double inputs[] = {9500.0, 110.0, 95.0, 11.0, 13.0, 12.5};
  const double mass = 36.0 * (11.0 + 13.0 + 4 * 12.0 + std::sqrt(2.0) * (12.5 + 3 * 12.0));
  std::vector<double> out(kNumOutputs);
  ASSERT_EQ(dzel2_solve(path, 1, inputs, 6, ZEL_SOLVE_RESPONSES, out.data(), kNumOutputs), ZEL_OK)
      << dzel2_getLastError();
  EXPECT_NEAR(out[0], mass, 1e-9 * mass);
  std::vector<double> gradients(6);
  ASSERT_EQ(dzel2_get_per_response(path, 1, inputs, 6, "mass", ZEL_RESPONSE_GRADIENTS,
                                   gradients.data(), 6),
            ZEL_OK);
  EXPECT_EQ(gradients[0], 0.0);
  EXPECT_NEAR(gradients[3], 36.0, 1e-6);
  EXPECT_NEAR(gradients[5], 36.0 * std::sqrt(2.0), 1e-6);
  dzel2_cleanup();
}

TEST(SampleProject, CutAnywhereItIsRefused) {
  const std::string whole = support::ReadFile(TEST_SAMPLE);
  DamagedFile file;
  const Quiet quiet;
  // Every byte of the header and of the first records, then in steps that are no multiple of a
  // double's 8 bytes.
  for (std::size_t size = 0; size < whole.size(); size += size < 600 ? 1 : 4999)
    EXPECT_FALSE(file.Use(whole.substr(0, size))) << size;
  EXPECT_FALSE(file.Use(whole.substr(0, whole.size() - 1)));
  EXPECT_TRUE(file.Use(whole));
}

TEST(SampleProject, FlippedBytesDoNoHarm) {
  const std::string whole = support::ReadFile(TEST_SAMPLE);
  DamagedFile file;
  std::mt19937 random(11);
  int refused = 0;
  const long before = PeakMegabytes();
  {
    const Quiet quiet;
    for (int round = 0; round < 400; ++round) {
      std::string damaged = whole;
      // Half of the rounds among the records at the start, where counts and ids are dense.
      const std::size_t range = round % 2 == 0 ? whole.size() : std::size_t{20000};
      damaged[random() % range] = static_cast<char>(random());
      refused += file.Use(damaged) ? 0 : 1;
    }
  }
  EXPECT_GT(refused, 20);
  // The file has less than 1 MB; a count taken on trust would allocate gigabytes.
  EXPECT_LT(PeakMegabytes() - before, TEST_SANITIZED ? 1000 : 50);
}

}  // namespace
