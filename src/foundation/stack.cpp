#include "foundation/stack.h"

#include <pthread.h>

#include <cstddef>
#include <cstdint>

namespace corvath::utils {
namespace {

constexpr std::uintptr_t kReserve = 24 * 1024;

struct Bounds {
  bool is_known = false;  ///< they were asked for
  std::uintptr_t low = 0;
  std::uintptr_t high = 0;  ///< 0: the system does not tell
};

/// Has no destructor, which would keep the library loaded.
thread_local Bounds bounds;

void FindBounds() {
  bounds.is_known = true;
#ifdef __GLIBC__
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* low = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &low, &size) == 0) {
    bounds.low = reinterpret_cast<std::uintptr_t>(low);
    bounds.high = bounds.low + size;
  }
  pthread_attr_destroy(&attributes);
#endif
}

}  // namespace

bool IsStackLow() {
  if (!bounds.is_known) FindBounds();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here >= bounds.low && here < bounds.high && here - bounds.low < kReserve;
}

}  // namespace corvath::utils
