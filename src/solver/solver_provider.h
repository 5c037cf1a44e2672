#pragma once

#include "foundation/log.h"

#include <boost/functional/hash.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/unordered_map.hpp>

#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

namespace corvath::zel {

class ZELSolver;

/// The registry of open solvers: one per path, from the first call on the path until Clear().
///
/// A path is what the caller wrote, not the file behind it: two spellings of one file are two
/// entries, except that "/" and "\" are the same. An open file isn't looked at again.
///
/// Threads may share it. Who has got a solver keeps it, whatever is cleared meanwhile. One path is
/// opened by one thread, for which others that want it wait; other paths go on.
///
/// There is no upper bound and no eviction: closing a project behind the caller's back would cost
/// the next call a load, and a signature decided at opening would be decided anew.
class ZELSolverProvider {
 public:
  /// The open solver of `path`, or a new one after reading the file.
  /// @param signature  the SHA-512 that the caller expects of the file, see FileSignature(): with
  ///                   it the file must have had exactly this one when it was opened; without it
  ///                   the file must have been opened without
  /// @param allow_missing_models  whether a project without metamodels may be opened; the two kinds
  ///                   of solvers of one path are two entries
  /// @throws std::runtime_error  "Initializing new solver failed." (the log tells why), "File seems
  ///                   to be corrupt. Signature is invalid or missing", and what reading a project
  ///                   throws. A failed load leaves the path unknown; a wrong signature leaves the
  ///                   solver open under the true one
  boost::shared_ptr<ZELSolver> GetSolver(const std::wstring& path,
                                         const std::optional<std::string>& signature,
                                         bool allow_missing_models);

  /// Closes all solvers; those that calls still use when these end.
  void Clear();

  /// Around fork(): the child gets the registry between two uses of it. What other threads were
  /// opening it opens by itself when it needs it.
  void BeforeFork();
  void AfterForkInParent();
  void AfterForkInChild();

 private:
  struct SolverKey {
    std::wstring path;  ///< with its separators brought to one form
    bool allow_missing_models;

    friend bool operator==(const SolverKey& a, const SolverKey& b) {
      return a.path == b.path && a.allow_missing_models == b.allow_missing_models;
    }
    friend std::size_t hash_value(const SolverKey& key) {
      std::size_t seed = boost::hash_value(key.path);
      boost::hash_combine(seed, key.allow_missing_models);
      return seed;
    }
  };
  struct SolverEntry {
    boost::shared_ptr<ZELSolver> solver;   ///< never empty
    std::optional<std::string> signature;  ///< present if the file was opened with a signature
  };

  /// One path, also while it is being opened.
  struct Slot {
    std::mutex opening;                ///< held by the thread that opens it
    std::optional<SolverEntry> entry;  ///< guarded by the registry's mutex
  };

  static SolverEntry Open(const std::wstring& path, bool sign, bool allow_missing_models);
  SolverEntry GetEntry(const SolverKey& key, const std::wstring& path, bool sign);

  std::mutex mutex_;  ///< guards what follows; never held while a file is read or closed
  boost::unordered_map<SolverKey, std::shared_ptr<Slot>> solvers_;
};

}  // namespace corvath::zel
