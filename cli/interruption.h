#pragma once

#include "study/table/output_file.h"

#include <signal.h>

namespace cli {

/// From now on SIGINT, SIGTERM and SIGHUP end the program as ever, at once and under their own exit
/// status, but first clear the line of progress and remove the file in work. A file that grows
/// beyond the limit of the process is an error of writing and no signal.
void HandleInterruptions();

/// Knows the file in work, which an interruption removes; one at a time.
corvath::study::FileWatcher& GetFileWatcher();

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
