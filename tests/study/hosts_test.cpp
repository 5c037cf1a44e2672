#include "study_calls.h"
#include "support/temporary_directory.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <zelsolver/zelsolver.hpp>

#include <thread>

namespace {

using namespace study_calls;
using testing::HasSubstr;

TEST(Study, ACallThatIsCancelledLeavesNothing) {
  struct State {
    int left;
    std::thread::id thread;
  };
  const auto progress = [](double, const char*, void* user) {
    auto& state = *static_cast<State*>(user);
    EXPECT_EQ(std::this_thread::get_id(), state.thread);
    return --state.left < 0 ? 1 : 0;
  };
  const Table table = Data().MakeTable();
  int status = ZELSTUDY_CANCELLED;
  for (const int calls : {0, 1, 2, 1 << 20}) {
    State state{calls, std::this_thread::get_id()};
    zelstudy_project* project = nullptr;
    zelstudy_result* result = nullptr;
    status = zelstudy_train(table.get(), kTraining, progress, &state, &project, &result);
    const Project owned(project);
    const Result result_owned(result);
    EXPECT_TRUE(calls > 0 || status == ZELSTUDY_CANCELLED);
    EXPECT_EQ(status == ZELSTUDY_OK, project != nullptr);
    EXPECT_EQ(status == ZELSTUDY_OK, result != nullptr);
    EXPECT_EQ(LastError(), status == ZELSTUDY_OK ? "" : "cancelled");
  }
  EXPECT_EQ(status, ZELSTUDY_OK) << "the table is as it was";

  const Project sample = OpenSample();
  const std::vector<double> designs(10 * 70000, 10.0);
  for (int calls = 0; calls < 2; ++calls) {
    State state{calls, std::this_thread::get_id()};
    zelstudy_result* result = nullptr;
    EXPECT_EQ(zelstudy_solve(sample.get(), R"({"responses": ["mass"]})", designs.data(), 70000,
                             progress, &state, &result),
              ZELSTUDY_CANCELLED);
  }
}

TEST(Study, ThreadsHaveErrorsOfTheirOwnAndShareAProject) {
  const Project project = OpenSample();
  const std::vector<double> design(10, 10.0);
  const auto expected = ArrayOf(Solve(project, nullptr, design, 1), "responses").values;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, name = "f" + std::to_string(t)] {
      for (int i = 0; i < 50; ++i) {
        zelstudy_result* none = nullptr;
        EXPECT_EQ(zelstudy_help(name.c_str(), &none), ZELSTUDY_REFUSED);
        EXPECT_EQ(ArrayOf(Solve(project, R"({"criteria": true})", design, 1), "responses").values,
                  expected);
        EXPECT_EQ(zelstudy_help(name.c_str(), &none), ZELSTUDY_REFUSED);
        EXPECT_THAT(LastError(), HasSubstr('"' + name + '"'));
      }
    });
  for (std::thread& thread : threads) thread.join();
}

/// A copy of the library that comes and goes, as a plug-in of a host brings it along.
TEST(Study, GoesOnWhenAnotherCopyIsUnloaded) {
  const support::TemporaryDirectory folder;
  const std::string path = folder.File("copy.so");
  support::WriteFile(path, support::ReadFile(TEST_LIBRARY));
  void* const copy = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(copy, nullptr) << dlerror();
  const auto open = reinterpret_cast<int (*)(const char*, const char*, zelstudy_project**)>(
      dlsym(copy, "zelstudy_project_open"));
  const auto close =
      reinterpret_cast<void (*)(zelstudy_project*)>(dlsym(copy, "zelstudy_project_close"));
  zelstudy_project* project = nullptr;
  EXPECT_EQ(open(TEST_SAMPLE, nullptr, &project), ZELSTUDY_OK);
  close(project);
  dlclose(copy);
  EXPECT_NE(OpenSample(), nullptr);
  zelsolver::Project::CloseAll();
  EXPECT_EQ(zelsolver::Project(TEST_SAMPLE).GetInputs().size(), 10u);
}

}  // namespace
