#pragma once

#include <signal.h>

/// Signals belong to the host: its handlers run on threads that it knows, never on one of ours.
namespace corvath::utils {

/// Keeps signals off the calling thread from now on, but for those that tell of a fault of its own.
void BlockSignals();

/// The same while it lives, so that threads started meanwhile never see a signal.
class SignalsBlocked {
 public:
  SignalsBlocked();
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked();

 private:
  sigset_t before_;
};

}  // namespace corvath::utils
