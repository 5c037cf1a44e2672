#include "foundation/host_signals.h"

#include <initializer_list>

namespace corvath::utils {
namespace {

sigset_t AllButFaults() {
  sigset_t signals;
  sigfillset(&signals);
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT})
    sigdelset(&signals, fault);
  return signals;
}

}  // namespace

void BlockSignals() {
  const sigset_t signals = AllButFaults();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

SignalsBlocked::SignalsBlocked() {
  const sigset_t signals = AllButFaults();
  pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

SignalsBlocked::~SignalsBlocked() {
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace corvath::utils
