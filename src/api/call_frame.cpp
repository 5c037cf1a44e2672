#include "api/call_frame.h"

#include "api/thread_state.h"
#include "archive/other_copies.h"
#include "foundation/text.h"
#include "solver/solver_provider.h"
#include "solver/zel_solver.h"

#include <pthread.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <new>
#include <optional>

namespace corvath::zel::api {
namespace {

constexpr wchar_t kDefaultPath[] = L"zel_tenbar.vrdb";
constexpr char kUnloaded[] = "The process is ending and the library is closed.";

/// What all threads share.
struct Shared {
  ZELSolverProvider provider;
  std::mutex error_mutex;
  std::string error;  ///< of the process's last call, guarded by `error_mutex`

  void BeforeFork() {
    provider.BeforeFork();
    error_mutex.lock();
  }
  void AfterForkInParent() {
    error_mutex.unlock();
    provider.AfterForkInParent();
  }
  void AfterForkInChild() {
    error_mutex.unlock();
    provider.AfterForkInChild();
  }
};

/// Null after unloading. A host that loads the library late may have registered earlier what calls
/// it at the end of the process; such a call finds nothing open, and opens nothing.
Shared* shared = nullptr;
/// Whether `shared->error` is the error of the process's last call, for threads whose own last call
/// did not fail.
std::atomic<bool> has_shared_error{false};

class SharedOwner {
 public:
  SharedOwner() {
    archive::KeepLoadedWithOtherCopies(boost::serialization::guid<ZELSolver>());
    shared = new Shared;
    pthread_atfork(
        [] {
          if (shared != nullptr) shared->BeforeFork();
        },
        [] {
          if (shared != nullptr) shared->AfterForkInParent();
        },
        [] {
          if (shared != nullptr) shared->AfterForkInChild();
        });
  }
  SharedOwner(const SharedOwner&) = delete;
  SharedOwner& operator=(const SharedOwner&) = delete;
  ~SharedOwner() {
    delete shared;
    shared = nullptr;
  }
};

const SharedOwner shared_owner;

/// Keeps `text` as valid UTF-8 (it may quote what a caller passed), or as much as memory allows.
void Keep(const char* text, std::string& last) noexcept {
  try {
    last = utils::ToUtf8(utils::FromUtf8(text));
  } catch (const std::exception&) {  // no memory for it: what fits in place
    last.assign(text, std::min(std::strlen(text), last.capacity()));
  }
}

}  // namespace

void ClearLastError() noexcept {
  if (ThreadState* const own = FindThreadState()) own->error.clear();
  if (has_shared_error.load(std::memory_order_relaxed)) has_shared_error = false;
}

void SetLastError(const char* text) noexcept {
  if (*text == '\0') text = "Unknown error.";  // a failure always has a text
  if (shared == nullptr) {
    has_shared_error = true;
    return;
  }
  {
    const std::lock_guard<std::mutex> lock(shared->error_mutex);
    Keep(text, shared->error);
    has_shared_error = true;
  }
  try {
    Keep(text, GetThreadState().error);
  } catch (const std::bad_alloc&) {  // the process's text is left
  }
}

const char* GetLastError() noexcept {
  ThreadState* own = FindThreadState();
  if (own != nullptr && !own->error.empty()) return own->error.c_str();
  if (!has_shared_error) return nullptr;
  if (shared == nullptr) return kUnloaded;
  try {
    own = &GetThreadState();
  } catch (const std::bad_alloc&) {
    return "std::bad_alloc";
  }
  const std::lock_guard<std::mutex> lock(shared->error_mutex);
  Keep(shared->error.c_str(), own->told);
  return own->told.c_str();
}

void CloseSolvers() {
  if (shared != nullptr) shared->provider.Clear();
}

boost::shared_ptr<ZELSolver> ProvideSolver(const char* path_utf8, const char* hash) {
  const std::wstring path = path_utf8 != nullptr ? utils::FromUtf8(path_utf8) : kDefaultPath;
  const std::optional<std::string> signature =
      hash != nullptr ? std::optional<std::string>(hash) : std::nullopt;
  if (shared == nullptr) throw std::runtime_error(kUnloaded);
  auto solver = shared->provider.GetSolver(path, signature, /*allow_missing_models=*/false);
  if (!solver) throw std::runtime_error("Providing solver failed.");
  return solver;
}

std::wstring RequireName(const char* name_utf8, const char* what) {
  return utils::FromUtf8(RequireArray(name_utf8, 1, what));
}

}  // namespace corvath::zel::api
