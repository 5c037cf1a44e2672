#include "study/exports/last_error.h"

#include "foundation/per_thread.h"
#include "foundation/text.h"

#include <new>
#include <string>

namespace corvath::study::api {
namespace {

/// What a thread was told last. The fixed text needs no memory.
struct LastError {
  std::string text;
  const char* fixed = nullptr;
};

constexpr char kNoMemory[] = "out of memory";

utils::PerThread<LastError> errors;
const utils::PerThread<LastError>::Owner owner(errors);

}  // namespace

void ClearLastError() noexcept {
  LastError* const error = errors.Find();
  if (error == nullptr) return;
  error->text.clear();
  error->fixed = nullptr;
}

void SetLastError(const char* text) noexcept {
  LastError* const error = errors.Get();
  if (error == nullptr) return;
  error->fixed = nullptr;
  try {
    error->text = utils::ToUtf8(utils::FromUtf8(*text == '\0' ? "unknown error" : text));
  } catch (const std::bad_alloc&) {
    error->fixed = kNoMemory;
  }
}

const char* GetLastError() noexcept {
  const LastError* const error = errors.Find();
  if (error == nullptr) return nullptr;
  if (error->fixed != nullptr) return error->fixed;
  return error->text.empty() ? nullptr : error->text.c_str();
}

}  // namespace corvath::study::api
