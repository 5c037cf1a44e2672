#include "foundation/parallel.h"

#include "support/testing.h"

#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cfenv>
#include <mutex>
#include <numeric>
#include <thread>

using namespace corvath::utils;

namespace {

class Parallel : public testing::TestWithParam<std::size_t> {
 protected:
  void SetUp() override { SetNumThreads(GetParam()); }
  void TearDown() override { SetNumThreads(0); }
};

TEST_P(Parallel, CoversEachElementOnceFromMultiplesOfTheGrain) {
  for (const std::size_t count : {0, 1, 7, 64, 65, 1000, 4097}) {
    for (const std::size_t grain : {0, 1, 8, 64, 5000}) {
      std::vector<std::atomic<int>> hits(count);
      std::atomic<bool> is_aligned{true};
      ParallelFor(count, grain, [&](std::size_t begin, std::size_t end) {
        const std::size_t step = grain == 0 ? 1 : grain;
        if (begin % step != 0 || (end != count && end % step != 0) || begin >= end)
          is_aligned = false;
        for (std::size_t i = begin; i < end; ++i) ++hits[i];
      });
      EXPECT_TRUE(is_aligned) << count << " by " << grain;
      for (const auto& hit : hits) ASSERT_EQ(hit, 1) << count << " by " << grain;
    }
  }
}

TEST_P(Parallel, TheLowestFailureIsTheOneThatIsTold) {
  for (int repetition = 0; repetition < 50; ++repetition) {
    try {
      ParallelTasks(200, [](std::size_t i) {
        if (i == 50) std::this_thread::yield();  // the later ones tend to fail first
        if (i >= 50) throw std::out_of_range(std::to_string(i));
      });
      FAIL() << "nothing thrown";
    } catch (const std::out_of_range& error) {
      ASSERT_STREQ(error.what(), "50");
    }
  }
}

TEST_P(Parallel, APipelineKeepsTheOrderInBoundedPlacesAndTellsTheFirstFailure) {
  constexpr std::size_t kPlaces = 3;
  for (const std::size_t failing : {0, 57, 1000}) {  // of 200: the last fails nowhere
    std::vector<std::size_t> pieces(kPlaces);
    std::vector<std::size_t> consumed;
    std::size_t produced = 0;
    std::atomic<int> under_way{0};
    std::atomic<bool> is_bounded{true};
    std::string told;
    try {
      ParallelPipeline(
          kPlaces,
          [&](std::size_t place) {
            if (produced == 200) return false;
            pieces[place] = produced++;
            if (++under_way > static_cast<int>(kPlaces)) is_bounded = false;
            return true;
          },
          [&](std::size_t place) {
            if (pieces[place] % 3 == 0) std::this_thread::yield();
            ParallelFor(10, 1, [](std::size_t, std::size_t) {});
            if (pieces[place] >= failing) throw std::out_of_range(std::to_string(pieces[place]));
          },
          [&](std::size_t place) {
            consumed.push_back(pieces[place]);
            --under_way;
          });
    } catch (const std::out_of_range& error) {
      told = error.what();
    }
    EXPECT_EQ(told, failing < 200 ? std::to_string(failing) : "");
    EXPECT_TRUE(is_bounded);
    std::vector<std::size_t> expected(std::min<std::size_t>(failing, 200));
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(consumed, expected);
  }
}

TEST_P(Parallel, NestedAndConcurrentCallsEnd) {
  std::vector<std::thread> callers;
  std::atomic<std::size_t> sum{0};
  for (int caller = 0; caller < 4; ++caller)
    callers.emplace_back([&] {
      ParallelTasks(20, [&](std::size_t) {
        ParallelFor(100, 3, [&](std::size_t begin, std::size_t end) { sum += end - begin; });
      });
    });
  for (auto& caller : callers) caller.join();
  EXPECT_EQ(sum, 4u * 20u * 100u);
}

TEST_P(Parallel, AChildWorksOnAfterAFork) {
  const auto count = [] {
    std::atomic<std::size_t> done{0};
    ParallelTasks(100, [&](std::size_t) { ++done; });
    return done == 100;
  };
  ASSERT_TRUE(count());
  const pid_t child = fork();
  if (child == 0) {
    alarm(20);  // a deadlock ends by a signal
    _exit(count() ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(count());
}

TEST_P(Parallel, ACallerGetsOnThoughOthersWaitForIt) {
  std::mutex of_the_host;
  std::atomic<std::size_t> done{0};
  alarm(60);  // a deadlock ends by a signal
  std::vector<std::thread> callers;
  for (int caller = 0; caller < 6; ++caller)
    callers.emplace_back([&, caller] {
      for (int repetition = 0; repetition < 30; ++repetition) {
        std::unique_lock<std::mutex> held(of_the_host, std::defer_lock);
        if (caller == 0) held.lock();
        ParallelTasks(10, [&](std::size_t) {
          std::unique_lock<std::mutex> wanted(of_the_host, std::defer_lock);
          if (caller != 0) wanted.lock();
          std::this_thread::yield();
          ++done;
        });
      }
    });
  for (auto& caller : callers) caller.join();
  alarm(0);
  EXPECT_EQ(done, 6u * 30u * 10u);
}

TEST_P(Parallel, RangesRoundAsTheirCallerDoes) {
  const auto count_roundings = [](int wanted) {
    std::atomic<int> found{0};
    ParallelTasks(64, [&](std::size_t) {
      std::this_thread::yield();
      if (std::fegetround() == wanted) ++found;
    });
    return found.load();
  };
  EXPECT_EQ(count_roundings(FE_TONEAREST), 64);
  std::fesetround(FE_UPWARD);
  const int found = count_roundings(FE_UPWARD);
  std::fesetround(FE_TONEAREST);
  EXPECT_EQ(found, 64);
  EXPECT_EQ(count_roundings(FE_TONEAREST), 64);
}

TEST_P(Parallel, SignalsOfTheHostStayOffWorkers) {
  const auto is_blocked = [](int number) {
    sigset_t mask;
    pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
  };
  const pthread_t caller = pthread_self();
  std::atomic<bool> is_right{true};
  ParallelTasks(100, [&](std::size_t) {
    std::this_thread::sleep_for(std::chrono::microseconds(50));  // so that workers get some
    const bool is_worker = pthread_equal(pthread_self(), caller) == 0;
    for (const int number : {SIGALRM, SIGINT, SIGPROF, SIGUSR1})
      if (is_blocked(number) != is_worker) is_right = false;
    if (is_blocked(SIGSEGV) || is_blocked(SIGFPE)) is_right = false;
  });
  EXPECT_TRUE(is_right);
}

INSTANTIATE_TEST_SUITE_P(Threads, Parallel, testing::Values(1, 2, 4));

TEST(NumThreads, ComesFromTheSetterTheEnvironmentOrTheAffinity) {
  cpu_set_t set;
  ASSERT_EQ(sched_getaffinity(0, sizeof(set), &set), 0);
  const auto processors = static_cast<std::size_t>(CPU_COUNT(&set));
  const std::pair<const char*, std::size_t> cases[] = {{"1", 1},
                                                       {"3", 3},
                                                       {"1024", 1024},
                                                       {"", processors},
                                                       {"0", processors},
                                                       {"-2", processors},
                                                       {"2x", processors},
                                                       {"1025", processors},
                                                       {"99999999999999999999999", processors}};
  for (const auto& [text, expected] : cases) {
    setenv("ZELSOLVER_NUM_THREADS", text, 1);
    EXPECT_EQ(GetNumThreads(), expected) << text;
  }
  setenv("ZELSOLVER_NUM_THREADS", "3", 1);
  SetNumThreads(5);
  EXPECT_EQ(GetNumThreads(), 5u);
  SetNumThreads(0);
  EXPECT_EQ(GetNumThreads(), 3u);
  unsetenv("ZELSOLVER_NUM_THREADS");
  EXPECT_EQ(GetNumThreads(), processors);
}

}  // namespace
