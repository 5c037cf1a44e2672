#include "api/result_buffers.h"

#include "api/thread_state.h"

namespace corvath::zel::api {

ResultBuffers& GetResultBuffers() {
  return GetThreadState().buffers;
}

void ReleaseResultBuffers() noexcept {
  if (ThreadState* const state = FindThreadState()) state->buffers = ResultBuffers();
}

}  // namespace corvath::zel::api
