#include "api/thread_state.h"

#include <pthread.h>

#include <memory>
#include <new>

namespace corvath::zel::api {
namespace {

pthread_key_t key{};
bool has_key = false;  ///< from loading to unloading

ThreadState* Find() noexcept {
  return has_key ? static_cast<ThreadState*>(pthread_getspecific(key)) : nullptr;
}

/// A key instead of a thread_local object, whose destructor would keep the library loaded after the
/// host has closed it. Unloading releases the state of the thread that unloads.
class KeyOwner {
 public:
  KeyOwner() {
    if (pthread_key_create(&key, [](void* state) { delete static_cast<ThreadState*>(state); }) != 0)
      throw std::bad_alloc();
    has_key = true;
  }
  KeyOwner(const KeyOwner&) = delete;
  KeyOwner& operator=(const KeyOwner&) = delete;
  ~KeyOwner() {
    delete Find();
    has_key = false;
    pthread_key_delete(key);
  }
};

const KeyOwner key_owner;

}  // namespace

ThreadState* FindThreadState() noexcept {
  return Find();
}

ThreadState& GetThreadState() {
  if (ThreadState* const known = Find()) return *known;
  auto state = std::make_unique<ThreadState>();
  if (!has_key || pthread_setspecific(key, state.get()) != 0) throw std::bad_alloc();
  return *state.release();
}

}  // namespace corvath::zel::api
