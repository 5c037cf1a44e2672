#pragma once

#include <boost/filesystem/path.hpp>

#include <memory>

namespace boost::interprocess {
class file_lock;
}

namespace corvath::algorithm::datatypes {

/// A lock on one project file between the processes of this machine: any number of readers, or one
/// writer. It stands beside the file, so that a file that is replaced keeps its lock.
///
/// The lock object is an empty file in one directory that all processes see; it stays behind after
/// the last user. The kernel drops a lock when its holder ends, however it ends, so that a killed
/// process never blocks others; a shared memory mutex would stay locked. Within one process the
/// lock excludes nothing: there, saving renames a finished file, and readers keep the one they
/// have.
class FileLock {
 public:
  enum class Mode { kShared, kExclusive };

  /// Waits until the lock is free.
  /// @throws boost::interprocess::interprocess_exception  there can be no lock object
  FileLock(const boost::filesystem::path& project, Mode mode);
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;
  ~FileLock();

  /// The lock object of a project. Spellings of its path that differ in "/" against "\\" share it.
  static boost::filesystem::path GetLockObject(const boost::filesystem::path& project);

 private:
  std::unique_ptr<boost::interprocess::file_lock> lock_;
  Mode mode_;
};

}  // namespace corvath::algorithm::datatypes
