#pragma once

#include <chrono>
#include <string>

namespace cli {

/// One line on standard error, rewritten a few times a second: a bar with the time that is left, and
/// what is in work. Nothing when standard error is no terminal.
class ProgressLine {
 public:
  /// @param show  false: nothing in any case
  explicit ProgressLine(bool show = true);
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine() { Clear(); }

  /// @param work   what is done, UTF-8; cut where the line is full
  /// @param share  of the work that is done, 0 to 1; negative: unknown
  void Update(const std::string& work, double share);
  void Clear();

 private:
  using Clock = std::chrono::steady_clock;

  std::string TimeLeft(Clock::time_point now, double share) const;

  bool on_terminal_;
  bool shown_ = false;
  Clock::time_point start_;
  Clock::time_point next_;
};

}  // namespace cli
