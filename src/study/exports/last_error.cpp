#include "study/exports/last_error.h"

#include "foundation/text.h"

#include <pthread.h>

#include <memory>
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

pthread_key_t key{};
bool has_key = false;  ///< from loading to unloading

/// A key instead of a thread_local object, whose destructor would keep the library loaded after the
/// host has closed it.
class KeyOwner {
 public:
  KeyOwner() {
    if (pthread_key_create(&key, [](void* error) { delete static_cast<LastError*>(error); }) != 0)
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

  static LastError* Find() noexcept {
    return has_key ? static_cast<LastError*>(pthread_getspecific(key)) : nullptr;
  }
  /// Null where there is no memory.
  static LastError* Get() noexcept {
    if (LastError* const known = Find()) return known;
    std::unique_ptr<LastError> made(new (std::nothrow) LastError);
    if (!made || !has_key || pthread_setspecific(key, made.get()) != 0) return nullptr;
    return made.release();
  }
};

const KeyOwner key_owner;

}  // namespace

void ClearLastError() noexcept {
  LastError* const error = KeyOwner::Find();
  if (error == nullptr) return;
  error->text.clear();
  error->fixed = nullptr;
}

void SetLastError(const char* text) noexcept {
  LastError* const error = KeyOwner::Get();
  if (error == nullptr) return;
  error->fixed = nullptr;
  try {
    error->text = utils::ToUtf8(utils::FromUtf8(*text == '\0' ? "unknown error" : text));
  } catch (const std::bad_alloc&) {
    error->fixed = kNoMemory;
  }
}

const char* GetLastError() noexcept {
  const LastError* const error = KeyOwner::Find();
  if (error == nullptr) return nullptr;
  if (error->fixed != nullptr) return error->fixed;
  return error->text.empty() ? nullptr : error->text.c_str();
}

}  // namespace corvath::study::api
