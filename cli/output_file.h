#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace cli {

/// A result file, or standard output for "-". A file is written beside its place under a temporary
/// name and takes its place in Commit(); without Commit() an old file stays as it is.
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
  std::string temporary_;
  std::FILE* file_;
};

}  // namespace cli
