#pragma once

#include <pthread.h>

#include <memory>
#include <new>

namespace corvath::utils {

/// An object for each thread that asks for one, deleted where the thread ends. It stands at namespace
/// scope, beside an Owner.
///
/// A key of the system instead of a thread_local object, whose destructor would keep the library
/// loaded after the host has closed it.
template <class State>
class PerThread {
 public:
  /// Holds the key from loading to unloading. Unloading deletes the object of the thread that unloads;
  /// others find none from then on.
  class Owner {
   public:
    explicit Owner(PerThread& of) : of_(of) {
      if (pthread_key_create(&of_.key_, [](void* state) { delete static_cast<State*>(state); }) !=
          0)
        throw std::bad_alloc();
      of_.has_key_ = true;
    }
    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;
    ~Owner() {
      delete of_.Find();
      of_.has_key_ = false;
      pthread_key_delete(of_.key_);
    }

   private:
    PerThread& of_;
  };

  /// Null if this thread has none yet.
  State* Find() const noexcept {
    return has_key_ ? static_cast<State*>(pthread_getspecific(key_)) : nullptr;
  }
  /// Null where there is no memory.
  State* Get() const noexcept {
    if (State* const known = Find()) return known;
    std::unique_ptr<State> made(new (std::nothrow) State);
    if (!made || !has_key_ || pthread_setspecific(key_, made.get()) != 0) return nullptr;
    return made.release();
  }

 private:
  pthread_key_t key_{};
  bool has_key_ = false;  // outlives the owner
};

}  // namespace corvath::utils
