#include "api/call_frame.h"

#include "foundation/text.h"
#include "solver/solver_provider.h"
#include "solver/zel_solver.h"

#include <cstring>
#include <optional>

namespace corvath::zel::api {
namespace {

constexpr wchar_t kDefaultPath[] = L"zel_tenbar.vrdb";

std::string& LastError() {
  static std::string text;
  return text;
}

}  // namespace

void ClearLastError() noexcept {
  LastError().clear();
}

void SetLastError(const char* text) noexcept {
  std::string& last = LastError();
  try {
    last = text;
    if (last.empty()) last = "Unknown error.";  // a failure always has a text
  } catch (const std::exception&) {             // no memory for it: what fits in place
    last.assign(text, std::min(std::strlen(text), last.capacity()));
  }
}

const char* GetLastError() noexcept {
  const std::string& last = LastError();
  return last.empty() ? nullptr : last.c_str();
}

ZELSolverProvider& GetSolverProvider() {
  static ZELSolverProvider provider;
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
