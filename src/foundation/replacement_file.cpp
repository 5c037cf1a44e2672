#include "foundation/replacement_file.h"

#include "foundation/symbolic_links.h"

#include <boost/filesystem/operations.hpp>
#include <boost/format.hpp>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace corvath::utils {
namespace {

namespace fs = boost::filesystem;

constexpr mode_t kNewFile = 0666;  // less the umask
constexpr mode_t kPermissions = 0777;

[[noreturn]] void ThrowErrno(const fs::path& path) {
  ThrowWriteError(path, std::system_category().message(errno));
}

fs::path TargetOf(const fs::path& path) {
  try {
    return FollowLinks(path.native());
  } catch (const std::system_error& error) {
    ThrowWriteError(path, error.code().message());
  }
}

}  // namespace

void ThrowWriteError(const fs::path& path, const std::string& reason) {
  throw std::runtime_error(str(boost::format("Error while writing \"%1%\": %2%") % path % reason));
}

void SyncDirectoryOf(const fs::path& path) {
  const fs::path parent = path.parent_path();
  const int directory = ::open(parent.empty() ? "." : parent.c_str(), O_RDONLY | O_CLOEXEC);
  if (directory < 0) return;
  ::fsync(directory);
  ::close(directory);
}

ReplacementFile::ReplacementFile(const fs::path& target) : target_(TargetOf(target)) {
  struct stat old {};
  if (::stat(target_.c_str(), &old) == 0 && !S_ISREG(old.st_mode))
    ThrowWriteError(target_, S_ISDIR(old.st_mode) ? "Is a directory" : "It is no regular file");
  do {
    name_ = target_.native() + fs::unique_path(".%%%%%%%%").native();
    file_ = ::open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFile);
  } while (file_ < 0 && errno == EEXIST);
  if (file_ < 0) ThrowErrno(target_);
}

ReplacementFile::~ReplacementFile() {
  ::close(file_);
  if (!renamed_) ::unlink(name_.c_str());
}

void ReplacementFile::Commit() {
  struct stat old {};
  if (::stat(target_.c_str(), &old) == 0) ::fchmod(file_, old.st_mode & kPermissions);
  if (::fsync(file_) != 0) ThrowErrno(target_);
  if (::rename(name_.c_str(), target_.c_str()) != 0) ThrowErrno(target_);
  renamed_ = true;
  SyncDirectoryOf(target_);
}

}  // namespace corvath::utils
