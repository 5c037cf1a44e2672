#pragma once

#include <chrono>
#include <cstdint>

namespace cli {

/// One line on standard error that counts designs, rewritten a few times a second; nothing when
/// standard error is no terminal.
class ProgressLine {
 public:
  ProgressLine();
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;
  ~ProgressLine();  ///< clears the line

  /// @param share  of the work that is done, 0 to 1; negative: unknown
  void Update(std::uint64_t designs, double share);

 private:
  bool on_terminal_;
  bool shown_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace cli
