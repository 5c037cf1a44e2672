#include "progress_line.h"

#include "foundation/text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace cli {
namespace {

constexpr std::chrono::milliseconds kInterval(200);
constexpr std::size_t kBar = 20;  ///< characters

std::size_t TerminalWidth() {
  constexpr std::size_t kUsual = 80;
  winsize size{};
  const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : kUsual;
}

/// "[######..............]  31 %".
std::string Bar(double share) {
  const auto full = static_cast<std::size_t>(share * static_cast<double>(kBar));
  char percent[16];
  std::snprintf(percent, sizeof percent, "] %3.0f %%", std::floor(100.0 * share));
  return '[' + std::string(full, '#') + std::string(kBar - full, '.') + percent;
}

/// "8 s", "2 min 30 s", "1 h 20 min".
std::string Duration(double seconds) {
  const auto all = static_cast<long long>(std::ceil(seconds));
  if (all < 60) return std::to_string(all) + " s";
  if (all < 3600) return std::to_string(all / 60) + " min " + std::to_string(all % 60) + " s";
  return std::to_string(all / 3600) + " h " + std::to_string(all / 60 % 60) + " min";
}

}  // namespace

ProgressLine::ProgressLine(bool show)
    : on_terminal_(show && isatty(STDERR_FILENO) != 0), start_(Clock::now()), next_(start_) {}

void ProgressLine::Clear() {
  if (shown_) std::fputs("\r\x1b[K", stderr);
  shown_ = false;
}

/// Empty while too little is done to tell.
std::string ProgressLine::TimeLeft(Clock::time_point now, double share) const {
  constexpr double kSeconds = 1.0;
  constexpr double kShare = 0.01;
  const double elapsed = std::chrono::duration<double>(now - start_).count();
  if (elapsed < kSeconds || share < kShare) return "";
  return ", " + Duration(elapsed * (1.0 - share) / share) + " left";
}

void ProgressLine::Update(const std::string& work, double share) {
  if (!on_terminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kInterval;
  shown_ = true;
  share = std::min(share, 1.0);
  std::wstring line = corvath::utils::FromUtf8(
      share < 0.0 ? work : Bar(share) + TimeLeft(now, share) + ": " + work);
  const std::size_t width = TerminalWidth() - 1;  // a full line would wrap
  if (line.size() > width) line.resize(width);
  std::fprintf(stderr, "\r\x1b[K%s", corvath::utils::ToUtf8(line).c_str());
  std::fflush(stderr);
}

}  // namespace cli
