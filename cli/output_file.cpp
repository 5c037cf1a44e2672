#include "output_file.h"

#include "commands.h"
#include "standard_output.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace cli {

OutputFile::OutputFile(std::string path) : path_(std::move(path)), file_(nullptr) {
  if (path_ == "-") {
    file_ = ClaimStandardOutput();
    return;
  }
  temporary_ = path_ + ".part" + std::to_string(getpid());
  file_ = std::fopen(temporary_.c_str(), "wb");
  if (file_ == nullptr) Fail();
}

OutputFile::~OutputFile() {
  if (temporary_.empty()) return;
  if (file_ != nullptr) std::fclose(file_);
  std::remove(temporary_.c_str());
}

void OutputFile::Fail() const {
  throw Refusal((path_ == "-" ? "standard output" : path_) + ": " + std::strerror(errno));
}

void OutputFile::Write(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), file_) != text.size()) Fail();
}

void OutputFile::Commit() {
  if (std::fflush(file_) != 0) Fail();
  if (temporary_.empty()) return;
  std::FILE* const file = file_;
  file_ = nullptr;
  if (std::fclose(file) != 0 || std::rename(temporary_.c_str(), path_.c_str()) != 0) Fail();
  temporary_.clear();
}

}  // namespace cli
