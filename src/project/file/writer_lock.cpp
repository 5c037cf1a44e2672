#include "project/file/writer_lock.h"

#include "foundation/replacement_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string>
#include <thread>

namespace corvath::algorithm::datatypes {
namespace {

constexpr mode_t kOwnUser = 0600;
constexpr std::chrono::milliseconds kPause{20};

}  // namespace

WriterLock::WriterLock(const boost::filesystem::path& project, std::chrono::milliseconds patience)
    : path_(project.parent_path() / ("." + project.filename().native() + ".lock")) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (Try() == Attempt::kBusy) {
    if (std::chrono::steady_clock::now() >= end)
      utils::ThrowWriteError(project, GetHolder() + " is writing it (waited " +
                                          std::to_string(patience.count() / 1000) + " s)");
    std::this_thread::sleep_for(kPause);
  }
}

WriterLock::Attempt WriterLock::Try() {
  const int file =
      ::open(path_.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, kOwnUser);
  if (file < 0) return Attempt::kImpossible;
  const bool locked = ::flock(file, LOCK_EX | LOCK_NB) == 0;
  const bool is_busy = !locked && errno == EWOULDBLOCK;
  struct stat own {};
  struct stat current {};
  // Its holder removes the file: then this one has no name any more, and excludes nobody.
  const bool has_name = ::fstat(file, &own) == 0 && ::lstat(path_.c_str(), &current) == 0 &&
                        own.st_dev == current.st_dev && own.st_ino == current.st_ino;
  if (locked && has_name) {
    file_ = file;
    std::ofstream(path_.c_str()) << ::getpid();  // for those who wait
    return Attempt::kTaken;
  }
  ::close(file);
  return locked || is_busy ? Attempt::kBusy : Attempt::kImpossible;
}

/// Who holds the lock, as the holder noted it.
std::string WriterLock::GetHolder() const {
  std::string number;
  std::ifstream(path_.c_str()) >> number;
  const bool is_number =
      !number.empty() && number.size() < 20 &&
      std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; });
  return is_number ? "process " + number : "another process";
}

WriterLock::~WriterLock() {
  if (file_ < 0) return;
  ::unlink(path_.c_str());
  ::close(file_);
}

}  // namespace corvath::algorithm::datatypes
