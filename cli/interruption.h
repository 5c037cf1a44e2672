#pragma once

#include <signal.h>

#include <string>

namespace cli {

/// From now on SIGINT, SIGTERM and SIGHUP end the program as ever, at once and under their own exit
/// status, but first clear the line of progress and remove the file in work. A file that grows
/// beyond the limit of the process is an error of writing and no signal.
void HandleInterruptions();

/// The file in work, which an interruption removes; one at a time. To be made before the file is.
class FileInWork {
 public:
  explicit FileInWork(const std::string& path);
  FileInWork(const FileInWork&) = delete;
  FileInWork& operator=(const FileInWork&) = delete;
  ~FileInWork();
};

/// Makes interruptions wait while it lives: for steps that must end before the program may.
class InterruptionDelay {
 public:
  InterruptionDelay();
  InterruptionDelay(const InterruptionDelay&) = delete;
  InterruptionDelay& operator=(const InterruptionDelay&) = delete;
  ~InterruptionDelay();

 private:
  sigset_t before_;
};

}  // namespace cli
