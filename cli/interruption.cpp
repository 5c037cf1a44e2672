#include "interruption.h"

#include <unistd.h>

#include <climits>
#include <string_view>

namespace cli {
namespace {

constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};

char file_in_work[PATH_MAX];
volatile sig_atomic_t has_file = 0;
bool on_terminal = false;

void WriteError(std::string_view text) {
  if (write(STDERR_FILENO, text.data(), text.size()) < 0) return;  // nobody is left to be told
}

/// Calls nothing but what a signal handler may call.
void OnSignal(int signal) {
  if (has_file != 0) unlink(file_in_work);
  if (on_terminal) WriteError("\r\x1b[K");
  WriteError("zel: interrupted\n");
  raise(signal);  // its own action, see SA_RESETHAND, takes it when this returns
}

}  // namespace

void HandleInterruptions() {
  on_terminal = isatty(STDERR_FILENO) != 0;
  signal(SIGXFSZ, SIG_IGN);  // these two: what fails to be written says so itself
  signal(SIGPIPE, SIG_IGN);
  for (const int number : kSignals) {
    struct sigaction action {};
    sigaction(number, nullptr, &action);
    if (action.sa_handler == SIG_IGN) continue;  // as under nohup
    action.sa_handler = OnSignal;
    action.sa_flags = static_cast<int>(SA_RESETHAND);  // the highest bit
    sigaction(number, &action, nullptr);
  }
}

corvath::study::FileWatcher& GetFileWatcher() {
  class Watcher : public corvath::study::FileWatcher {
   public:
    void Begin(const std::string& path) override {
      // A path that is longer cannot be opened either.
      if (path.size() >= sizeof file_in_work) return;
      path.copy(file_in_work, path.size());
      file_in_work[path.size()] = '\0';
      has_file = 1;
    }
    void End() override { has_file = 0; }
  };
  static Watcher watcher;
  return watcher;
}

InterruptionDelay::InterruptionDelay() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : kSignals) sigaddset(&signals, number);
  pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

InterruptionDelay::~InterruptionDelay() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace cli
