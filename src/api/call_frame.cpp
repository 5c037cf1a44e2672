#include "api/call_frame.h"

#include "api/thread_state.h"
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

/// The error of the process's last call, for threads whose own last call did not fail.
struct ProcessError {
  std::mutex mutex;
  std::string text;                 ///< guarded by `mutex`
  std::atomic<bool> is_set{false};  ///< false: `text` is out of date
};
ProcessError process_error;

/// Keeps `text`, or as much as memory allows.
void Keep(const char* text, std::string& last) noexcept {
  try {
    last = text;
  } catch (const std::exception&) {  // no memory for it: what fits in place
    last.assign(text, std::min(std::strlen(text), last.capacity()));
  }
}

}  // namespace

void ClearLastError() noexcept {
  if (ThreadState* const own = FindThreadState()) own->error.clear();
  if (process_error.is_set.load(std::memory_order_relaxed)) process_error.is_set = false;
}

void SetLastError(const char* text) noexcept {
  if (*text == '\0') text = "Unknown error.";  // a failure always has a text
  {
    const std::lock_guard<std::mutex> lock(process_error.mutex);
    Keep(text, process_error.text);
    process_error.is_set = true;
  }
  try {
    Keep(text, GetThreadState().error);
  } catch (const std::bad_alloc&) {  // the process's text is left
  }
}

const char* GetLastError() noexcept {
  ThreadState* own = FindThreadState();
  if (own != nullptr && !own->error.empty()) return own->error.c_str();
  if (!process_error.is_set) return nullptr;
  try {
    own = &GetThreadState();
  } catch (const std::bad_alloc&) {
    return "std::bad_alloc";
  }
  const std::lock_guard<std::mutex> lock(process_error.mutex);
  Keep(process_error.text.c_str(), own->told);
  return own->told.c_str();
}

ZELSolverProvider& GetSolverProvider() {
  static ZELSolverProvider provider;
  static const int has_handlers = pthread_atfork(
      [] {
        provider.BeforeFork();
        process_error.mutex.lock();
      },
      [] {
        process_error.mutex.unlock();
        provider.AfterForkInParent();
      },
      [] {
        process_error.mutex.unlock();
        provider.AfterForkInChild();
      });
  static_cast<void>(has_handlers);
  return provider;
}

boost::shared_ptr<ZELSolver> ProvideSolver(const char* path_utf8, const char* hash) {
  const std::wstring path = path_utf8 != nullptr ? utils::FromUtf8(path_utf8) : kDefaultPath;
  const std::optional<std::string> signature =
      hash != nullptr ? std::optional<std::string>(hash) : std::nullopt;
  auto solver = GetSolverProvider().GetSolver(path, signature, /*allow_missing_models=*/false);
  if (!solver) throw std::runtime_error("Providing solver failed.");
  return solver;
}

std::wstring RequireName(const char* name_utf8, const char* what) {
  return utils::FromUtf8(RequireArray(name_utf8, 1, what));
}

}  // namespace corvath::zel::api
