#include "study_calls.h"
#include "support/temporary_directory.h"

#include <dlfcn.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <zelsolver/zelsolver.hpp>

#include <thread>

namespace {

using namespace study_calls;
using testing::HasSubstr;

TEST(Study, ACallThatIsCancelledLeavesNothing) {
  const Table table = Data().MakeTable();
  int status = ZELSTUDY_CANCELLED;
  for (const int calls : {0, 1, 2, 1 << 20}) {
    Countdown state{calls};
    zelstudy_project* project = nullptr;
    zelstudy_result* result = nullptr;
    status = zelstudy_train(table.get(), kTraining, CountDown, &state, &project, &result);
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
    Countdown state{calls};
    zelstudy_result* result = nullptr;
    EXPECT_EQ(zelstudy_solve(sample.get(), R"({"responses": ["mass"]})", designs.data(), 70000,
                             CountDown, &state, &result),
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
volatile sig_atomic_t num_alarms = 0;

TEST(Study, AlarmsOfTheHostInterruptNothingAndRunOnItsThread) {
  const support::TemporaryDirectory folder;
  const std::string pipe = folder.File("pipe");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::thread writer([&] {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    std::this_thread::sleep_for(std::chrono::milliseconds(10));  // the reader waits for this end
    std::ofstream stream(pipe);
    for (int row = -1; row < 20; ++row) {
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
      stream << (row < 0 ? "x,y" : std::to_string(row) + ",1") << std::endl;
    }
  });
  struct sigaction action {};
  action.sa_handler = [](int) { num_alarms = num_alarms + 1; };  // calls are not restarted
  struct sigaction before {};
  sigaction(SIGALRM, &action, &before);
  const itimerval each_millisecond{{0, 1000}, {0, 1000}};
  setitimer(ITIMER_REAL, &each_millisecond, nullptr);
  const Table table = Get<Table>(
      [&](zelstudy_table** out) { return zelstudy_table_read_csv(pipe.c_str(), nullptr, out); });
  writer.join();
  const auto description =
      Get<Result>([&](zelstudy_result** out) { return zelstudy_table_describe(table.get(), out); });
  EXPECT_EQ(Document(description)["rows"], 20);
  EXPECT_GT(num_alarms, 0);

  // From when the training has threads, this one keeps the alarm off: no other takes it.
  struct State {
    sigset_t alarm{};
    int calls = 0;
    int alarms = 0;
  } state;
  sigemptyset(&state.alarm);
  sigaddset(&state.alarm, SIGALRM);
  const auto progress = [](double, const char*, void* user) {
    auto& of_test = *static_cast<State*>(user);
    if (++of_test.calls != 2) return 0;
    pthread_sigmask(SIG_BLOCK, &of_test.alarm, nullptr);
    of_test.alarms = num_alarms;
    return 0;
  };
  zelstudy_project* project = nullptr;
  zelstudy_result* result = nullptr;
  EXPECT_EQ(
      zelstudy_train(Data().MakeTable().get(), kTraining, progress, &state, &project, &result),
      ZELSTUDY_OK);
  const Project owned(project);
  const Result result_owned(result);
  EXPECT_GE(state.calls, 2);
  EXPECT_EQ(num_alarms, state.alarms);
  pthread_sigmask(SIG_UNBLOCK, &state.alarm, nullptr);
  EXPECT_GT(num_alarms, state.alarms);
  const itimerval never{};
  setitimer(ITIMER_REAL, &never, nullptr);
  sigaction(SIGALRM, &before, nullptr);
}

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
