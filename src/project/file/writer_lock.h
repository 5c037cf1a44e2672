#pragma once

#include <boost/filesystem/path.hpp>

#include <chrono>

namespace corvath::algorithm::datatypes {

/// Keeps processes of one machine from replacing one project file at the same time. Readers need no
/// lock: a file is replaced in one step, so that they see the old or the new one as a whole.
///
/// The lock is a file beside the project that only this user can open, so that nobody else can hold
/// it. It is removed with the lock; one that a killed process left is free, and the next writer
/// takes it over. Where there can be no such file the work goes on without: the replacement is
/// whole all the same, and the last writer counts.
class WriterLock {
 public:
  /// Longer than any replacement takes, and short for somebody who waits.
  static constexpr std::chrono::milliseconds kPatience{5000};

  /// Waits for other writers.
  /// @throws std::runtime_error  `Error while writing ...`: after `patience`; tells who holds it
  explicit WriterLock(const boost::filesystem::path& project,
                      std::chrono::milliseconds patience = kPatience);
  WriterLock(const WriterLock&) = delete;
  WriterLock& operator=(const WriterLock&) = delete;
  ~WriterLock();

 private:
  enum class Attempt { kTaken, kBusy, kImpossible };
  Attempt Try();
  std::string GetHolder() const;

  boost::filesystem::path path_;  ///< of the lock
  int file_ = -1;
};

}  // namespace corvath::algorithm::datatypes
