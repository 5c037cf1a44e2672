#include "foundation/log.h"

#include "foundation/log_line.h"
#include "support/testing.h"

#include <boost/make_shared.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <thread>

namespace corvath::utils::log {
namespace {

TEST(Log, StreamLogSendsErrorsToTheSecondStream) {
  std::wostringstream out;
  std::wostringstream err;
  templates::BasicStreamLog<wchar_t> log(out, err);
  log.Write(kError, L"bad");
  log.Write(kInfoDetail, L"fine");
  log.Write(kError | kDebug, L"both");  // no level of its own
  EXPECT_EQ(err.str(), L"ERROR: bad\n");
  EXPECT_EQ(out.str(), L"INFO_DETAIL: fine\nUNDEFINED: both\n");
}

TEST(Log, SharedLogPrintsUtf8AndLeavesTheHostsStreamsUsable) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  std::printf("before\n");
  GetSharedStreamLog()->Write(kInfo, L"\u00e9\u20ac");
  GetSharedStreamLog()->Write(kError, L"\u00fc");
  std::printf("after\n");
  std::fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "before\nINFO: \xc3\xa9\xe2\x82\xac\nafter\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "ERROR: \xc3\xbc\n");
  EXPECT_EQ(GetSharedStreamLog(), GetSharedStreamLog());
}

TEST(LogLine, SendsWhatWasStreamedOnce) {
  const auto log = boost::make_shared<VectorLog>();
  LogLine(log, kWarning) << L"a" << 1 << std::string("\xc3\xa9") << 2.5;
  LogLine(log, kWarning);  // nothing streamed: nothing sent
  LogLine(static_cast<LogBase*>(nullptr), kError) << L"lost";
  std::wstring seen;
  LogLine(log, kInfo, [&](LogBase*, std::uint32_t level, std::wstring text) {
    seen = std::to_wstring(level) + text;
  }) << L"x";
  const auto lines = log->GetLines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], VectorLog::Line(kWarning, L"a1\u00e92.5"));
  EXPECT_EQ(seen, L"8x");
}

}  // namespace
TEST(SharedStreamLog, AChildWritesOnAfterAForkDuringALine) {
  testing::internal::CaptureStdout();
  std::atomic<bool> is_over{false};
  std::thread writer([&] {
    while (!is_over) GetSharedStreamLog()->Write(kInfo, L"line");
  });
  int failed = 0;
  for (int repetition = 0; repetition < 20; ++repetition) {
    const pid_t child = fork();
    if (child == 0) {
      alarm(20);  // a deadlock ends by a signal
      GetSharedStreamLog()->Write(kInfo, L"child");
      _exit(0);
    }
    int status = -1;
    failed += waitpid(child, &status, 0) != child || status != 0;
  }
  is_over = true;
  writer.join();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(failed, 0);
}

}  // namespace corvath::utils::log
