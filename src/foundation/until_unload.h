#pragma once

#include "foundation/once.h"

namespace corvath::utils {

/// One value for the whole process, made at its first use and destroyed when the library that holds
/// it is unloaded. For objects of namespace scope.
///
/// A static inside a function dies in the reverse order of first uses, so before what the host
/// registered ahead of its first call: exit handlers and global objects, which may call the library
/// too. This one is registered for destruction while the library is loaded.
template <class T>
class UntilUnload {
 public:
  constexpr UntilUnload() noexcept = default;
  UntilUnload(const UntilUnload&) = delete;
  UntilUnload& operator=(const UntilUnload&) = delete;
  ~UntilUnload() { delete value_; }

  /// The value; the first call takes what `make` returns. Threads may call at once.
  template <class Make>
  T& Get(const Make& make) {
    once_.Do([&] { value_ = new T(make()); });
    return *value_;
  }
  T& Get() {
    return Get([] { return T(); });
  }

 private:
  Once once_;
  T* value_ = nullptr;
};

}  // namespace corvath::utils
