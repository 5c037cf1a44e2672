#include "api/result_buffers.h"

namespace corvath::zel::api {

ResultBuffers& GetResultBuffers() {
  static ResultBuffers buffers;
  return buffers;
}

}  // namespace corvath::zel::api
