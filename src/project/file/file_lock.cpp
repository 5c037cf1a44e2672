#include "project/file/file_lock.h"

#include <boost/functional/hash.hpp>
#include <boost/interprocess/sync/file_lock.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

namespace corvath::algorithm::datatypes {
namespace {

// All users of a machine share the C library's own directory of temporary files, whatever their
// environment says; TMPDIR would split them.
constexpr char kDirectory[] = P_tmpdir "/CorvathBIP_ntbs";
constexpr mode_t kOpenDirectory = 01777;  // everybody adds files, only owners remove them
constexpr mode_t kOpenFile = 0666;

/// Makes the lock object if it is missing, open to all users whatever the umask. Failures show when
/// the lock is opened. A symbolic link in the last place is never followed.
void MakeLockObject(const boost::filesystem::path& object) {
  if (::mkdir(kDirectory, kOpenDirectory) == 0) ::chmod(kDirectory, kOpenDirectory);
  const int file =
      ::open(object.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kOpenFile);
  if (file < 0) return;
  ::fchmod(file, kOpenFile);
  ::close(file);
}

}  // namespace

boost::filesystem::path FileLock::GetLockObject(const boost::filesystem::path& project) {
  std::string text = project.native();
  std::replace(text.begin(), text.end(), '\\', '/');
  return boost::filesystem::path(kDirectory) /
         ("corvath-vrdb-" + std::to_string(hash_value(boost::filesystem::path(text))));
}

FileLock::FileLock(const boost::filesystem::path& project, Mode mode) : mode_(mode) {
  const boost::filesystem::path object = GetLockObject(project);
  MakeLockObject(object);
  lock_ = std::make_unique<boost::interprocess::file_lock>(object.c_str());
  if (mode_ == Mode::kExclusive)
    lock_->lock();
  else
    lock_->lock_sharable();
}

FileLock::~FileLock() {
  try {
    if (mode_ == Mode::kExclusive)
      lock_->unlock();
    else
      lock_->unlock_sharable();
  } catch (const boost::interprocess::interprocess_exception&) {
    // Closing the object releases it.
  }
}

}  // namespace corvath::algorithm::datatypes
