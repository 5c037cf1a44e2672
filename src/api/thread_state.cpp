#include "api/thread_state.h"

#include "foundation/per_thread.h"

#include <new>

namespace corvath::zel::api {
namespace {

utils::PerThread<ThreadState> states;
const utils::PerThread<ThreadState>::Owner owner(states);

}  // namespace

ThreadState* FindThreadState() noexcept {
  return states.Find();
}

ThreadState& GetThreadState() {
  if (ThreadState* const state = states.Get()) return *state;
  throw std::bad_alloc();
}

}  // namespace corvath::zel::api
