#include "api/thread_state.h"

#include <pthread.h>

#include <memory>
#include <new>

namespace corvath::zel::api {
namespace {

/// A key instead of a thread_local object, whose destructor would keep the library loaded after the
/// host has closed it. Unloading releases the state of the thread that unloads.
class StateKey {
 public:
  StateKey() {
    if (pthread_key_create(&key_, [](void* state) { delete static_cast<ThreadState*>(state); }) !=
        0)
      throw std::bad_alloc();
  }
  StateKey(const StateKey&) = delete;
  StateKey& operator=(const StateKey&) = delete;
  ~StateKey() {
    delete Find();
    pthread_setspecific(key_, nullptr);
    pthread_key_delete(key_);
  }

  ThreadState* Find() const noexcept {
    return static_cast<ThreadState*>(pthread_getspecific(key_));
  }
  void Set(std::unique_ptr<ThreadState> state) const {
    if (pthread_setspecific(key_, state.get()) != 0) throw std::bad_alloc();
    state.release();
  }

 private:
  pthread_key_t key_{};
};

StateKey state_key;

}  // namespace

ThreadState* FindThreadState() noexcept {
  return state_key.Find();
}

ThreadState& GetThreadState() {
  if (ThreadState* const known = state_key.Find()) return *known;
  state_key.Set(std::make_unique<ThreadState>());
  return *state_key.Find();
}

}  // namespace corvath::zel::api
