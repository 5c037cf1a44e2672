#include "study/table/output_file.h"

#include "foundation/replacement_file.h"
#include "foundation/symbolic_links.h"
#include "study/refusal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace corvath::study {
namespace {

std::string TargetOf(const std::string& path) {
  if (path.empty()) throw Refusal("the name of the file to write is empty");
  try {
    return utils::FollowLinks(path);
  } catch (const std::system_error& error) {
    throw Refusal(path + ": " + error.code().message());
  }
}

}  // namespace

OutputFile::OutputFile(std::string path, std::FILE* standard_output, FileWatcher* watcher)
    : path_(std::move(path)),
      watcher_(watcher),
      is_stream_(path_ == "-" && standard_output != nullptr) {
  if (is_stream_) {
    file_ = standard_output;
    return;
  }
  struct stat status {};
  if (stat(path_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    file_ = std::fopen(path_.c_str(), "wb");
  } else {
    target_ = TargetOf(path_);
    static std::atomic<unsigned int> count{0};  // threads may write the same file
    temporary_ = target_ + ".part" + std::to_string(getpid()) + '-' + std::to_string(++count);
    if (watcher_ != nullptr) watcher_->Begin(temporary_);
    file_ = std::fopen(temporary_.c_str(), "wb");
  }
  if (file_ != nullptr) return;
  if (watcher_ != nullptr && !temporary_.empty()) watcher_->End();
  Fail();
}

OutputFile::~OutputFile() {
  if (file_ != nullptr && !is_stream_) std::fclose(file_);
  if (temporary_.empty()) return;
  std::remove(temporary_.c_str());
  if (watcher_ != nullptr) watcher_->End();
}

void OutputFile::Fail() const {
  throw Refusal((is_stream_ ? "standard output" : path_) + ": " + std::strerror(errno));
}

void OutputFile::Write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) Fail();
}

void OutputFile::Commit() {
  if (std::fflush(file_) != 0) Fail();
  if (is_stream_) return;
  // The content first: a new name that reached the disk before it would leave an empty file in the
  // old one's place when the power fails.
  if (!temporary_.empty() && fsync(fileno(file_)) != 0) Fail();
  std::FILE* const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) Fail();
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail();
  temporary_.clear();
  utils::SyncDirectoryOf(target_);
  if (watcher_ != nullptr) watcher_->End();
}

}  // namespace corvath::study
