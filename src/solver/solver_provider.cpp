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
  const SolverKey key{WithPlainSeparators(path), allow_missing_models};
  SolverEntry entry = GetEntry(key, path, signature.has_value());
  // After the insertion: a wrong signature must not cost the next call another load.
  if (entry.signature != signature)
    throw std::runtime_error("File seems to be corrupt. Signature is invalid or missing");
  return std::move(entry.solver);
}

ZELSolverProvider::SolverEntry ZELSolverProvider::GetEntry(const SolverKey& key,
                                                           const std::wstring& path, bool sign) {
  std::shared_ptr<Slot> slot;
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::shared_ptr<Slot>& known = solvers_[key];
    if (!known) known = std::make_shared<Slot>();
    if (known->entry) return *known->entry;
    slot = known;
  }
  const std::lock_guard<std::mutex> opening(slot->opening);
  {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (slot->entry) return *slot->entry;  // another thread was first
  }
  try {
    SolverEntry entry = Open(path, sign, key.allow_missing_models);
    const std::lock_guard<std::mutex> lock(mutex_);
    slot->entry = entry;  // if the slot was cleared meanwhile, for this call and those that wait
    return entry;
  } catch (...) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = solvers_.find(key);
    if (found != solvers_.end() && found->second == slot) solvers_.erase(found);
    throw;
  }
}

void ZELSolverProvider::Clear() {
  boost::unordered_map<SolverKey, std::shared_ptr<Slot>> closed;
  const std::lock_guard<std::mutex> lock(mutex_);
  closed.swap(solvers_);
}

void ZELSolverProvider::BeforeFork() {
  mutex_.lock();
  ZELSolver::GetNamesMutex().lock();
}

void ZELSolverProvider::AfterForkInParent() {
  ZELSolver::GetNamesMutex().unlock();
  mutex_.unlock();
}

void ZELSolverProvider::AfterForkInChild() {
  for (auto slot = solvers_.begin(); slot != solvers_.end();) {
    if (slot->second->entry) {
      ++slot;
      continue;
    }
    new std::shared_ptr<Slot>(slot->second);  // a mutex that no thread will unlock stays for good
    slot = solvers_.erase(slot);
  }
  ZELSolver::RenewErrorsMutex();
  AfterForkInParent();
}

ZELSolverProvider::SolverEntry ZELSolverProvider::Open(const std::wstring& path, bool sign,
                                                       bool allow_missing_models) {
  SolverEntry entry;
  entry.solver = boost::make_shared<ZELSolver>(allow_missing_models);
  entry.solver->SetLogger(utils::log::GetSharedStreamLog());
  if (!entry.solver->Load(path)) throw std::runtime_error("Initializing new solver failed.");
  if (sign) entry.signature = FileSignature(path);
  return entry;
}

}  // namespace corvath::zel
