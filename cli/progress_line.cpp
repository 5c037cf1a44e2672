#include "progress_line.h"

#include <unistd.h>

#include <cstdio>

namespace cli {
namespace {

constexpr std::chrono::milliseconds kInterval(200);

}  // namespace

ProgressLine::ProgressLine()
    : on_terminal_(isatty(STDERR_FILENO) != 0), next_(std::chrono::steady_clock::now()) {}

ProgressLine::~ProgressLine() {
  if (shown_) std::fputs("\r\x1b[K", stderr);
}

void ProgressLine::Update(std::uint64_t designs, double share) {
  if (!on_terminal_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  shown_ = true;
  std::fprintf(stderr, "\r\x1b[K%llu designs", static_cast<unsigned long long>(designs));
  if (share >= 0.0) std::fprintf(stderr, ", %.0f %%", 100.0 * share);
  std::fflush(stderr);
}

}  // namespace cli
