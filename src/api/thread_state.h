#pragma once

#include "api/result_buffers.h"

#include <string>

namespace corvath::zel::api {

/// What each thread that calls the library has of its own.
struct ThreadState {
  std::string error;      ///< of its last call; empty if that succeeded
  std::string told;       ///< what the last query returned, where it was another thread's error
  ResultBuffers buffers;  ///< of this thread's last `dzel_allocate_and_` calls
};

/// Null if this thread has none yet.
ThreadState* FindThreadState() noexcept;
/// @throws std::bad_alloc
ThreadState& GetThreadState();

}  // namespace corvath::zel::api
