#include "solver/solver_provider.h"

#include "solver/file_signature.h"
#include "solver/zel_solver.h"

#include <boost/make_shared.hpp>

#include <stdexcept>

namespace corvath::zel {
namespace {

bool IsSeparator(wchar_t c) {
  return c == L'/' || c == L'\\';
}

/// `path` with every run of separators as one "/", so that paths of equal elements are equal texts.
/// Two leading separators stay, they are another root.
std::wstring WithPlainSeparators(const std::wstring& path) {
  std::wstring plain;
  plain.reserve(path.size());
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (!IsSeparator(path[i])) {
      plain += path[i];
    } else if (i < 2 || !IsSeparator(path[i - 1])) {
      plain += L'/';
    }
  }
  return plain;
}

}  // namespace

boost::shared_ptr<ZELSolver> ZELSolverProvider::GetSolver(
    const std::wstring& path, const std::optional<std::string>& signature,
    bool allow_missing_models) {
  SolverKey key{WithPlainSeparators(path), allow_missing_models};
  auto found = solvers_.find(key);
  if (found == solvers_.end()) {
    const auto [added, is_new] =
        solvers_.emplace(std::move(key), Open(path, signature.has_value(), allow_missing_models));
    if (!is_new) throw std::runtime_error("Adding new solver failed.");
    found = added;
  }
  // After the insertion: a wrong signature must not cost the next call another load.
  if (found->second.signature != signature)
    throw std::runtime_error("File seems to be corrupt. Signature is invalid or missing");
  return found->second.solver;
}

ZELSolverProvider::SolverEntry ZELSolverProvider::Open(const std::wstring& path, bool sign,
                                                       bool allow_missing_models) {
  SolverEntry entry;
  entry.solver = boost::make_shared<ZELSolver>(allow_missing_models);
  if (!log_) log_ = utils::log::GetSharedStreamLog();
  entry.solver->SetLogger(log_);
  if (!entry.solver->Load(path)) throw std::runtime_error("Initializing new solver failed.");
  if (sign) entry.signature = FileSignature(path);
  return entry;
}

}  // namespace corvath::zel
