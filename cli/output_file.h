#pragma once

#include "interruption.h"

#include <cstdio>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/// A result file, or standard output for "-". A file is written beside its place under a temporary
/// name and takes its place in Commit(); without Commit(), and after an interruption, an old file
/// stays as it is. A symbolic link stays, and its target is replaced; what is no regular file (a
/// pipe, a device) is written to as it is.
class OutputFile {
 public:
  explicit OutputFile(std::string path);  ///< @throws Refusal  it cannot be created
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;
  ~OutputFile();

  void Write(std::string_view text);  ///< @throws Refusal  the disk is full, ...
  void Commit();                      ///< @throws Refusal  likewise

 private:
  [[noreturn]] void Fail() const;

  std::string path_;
  std::string target_;     ///< path_ behind all links
  std::string temporary_;  ///< empty when there is none
  std::optional<FileInWork> in_work_;
  std::FILE* file_ = nullptr;
};

}  // namespace cli
