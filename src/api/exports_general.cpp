#include "api/call_frame.h"
#include "api/result_buffers.h"
#include "foundation/build_version.h"
#include "foundation/parallel.h"
#include "variant/signals/idle_plan.h"

#include <cstdlib>

namespace api = corvath::zel::api;

const char* dzel2_getLastError() {
  return api::GetLastError();
}
const char* dzel_getLastError() {
  return api::GetLastError();
}

const char* dzel2_get_version_str() {
  return corvath::utils::GetBuildVersion().full_text.c_str();
}
const char* dzel_get_version_str() {
  return dzel2_get_version_str();
}

int dzel2_free(void* ptr) {
  return api::Call([&] { std::free(ptr); });
}

int dzel2_cleanup() {
  return api::Call([] {
    api::ReleaseResultBuffers();
    api::CloseSolvers();
    corvath::utils::ReleaseThreads();
    corvath::math::dft::ReleaseIdlePlan();
  });
}
int dzel_cleanup() {
  return api::Collapse(dzel2_cleanup());
}

int dzel2_set_paths_for_custom_interface(...) {
  return ZEL_UNSUPPORTED;
}
int dzel_set_paths_for_custom_interface(...) {
  return ZEL_FAILED;
}
