#include "output_file.h"

#include "commands.h"
#include "standard_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace cli {
namespace {

/// The file behind the links, or the path itself where there is none.
std::string ResolveLinks(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> resolved(realpath(path.c_str(), nullptr), std::free);
  return resolved ? resolved.get() : path;
}

}  // namespace

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
  if (path_ == "-") {
    file_ = ClaimStandardOutput();
    return;
  }
  struct stat status {};
  if (stat(path_.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    file_ = std::fopen(path_.c_str(), "wb");
  } else {
    target_ = ResolveLinks(path_);
    temporary_ = target_ + ".part" + std::to_string(getpid());
    in_work_.emplace(temporary_);
    file_ = std::fopen(temporary_.c_str(), "wb");
  }
  if (file_ == nullptr) Fail();
}

OutputFile::~OutputFile() {
  if (file_ != nullptr && path_ != "-") std::fclose(file_);
  if (!temporary_.empty()) std::remove(temporary_.c_str());
}

void OutputFile::Fail() const {
  throw Refusal((path_ == "-" ? "standard output" : path_) + ": " + std::strerror(errno));
}

void OutputFile::Write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) Fail();
}

void OutputFile::Commit() {
  if (std::fflush(file_) != 0) Fail();
  if (path_ == "-") return;
  std::FILE* const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0) Fail();
  if (temporary_.empty()) return;
  if (std::rename(temporary_.c_str(), target_.c_str()) != 0) Fail();
  temporary_.clear();
  in_work_.reset();
}

}  // namespace cli
