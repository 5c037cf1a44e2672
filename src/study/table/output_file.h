#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace corvath::study {

/// Told of files in work, which somebody who ends the process may want to remove.
class FileWatcher {
 public:
  virtual ~FileWatcher() = default;
  virtual void Begin(const std::string& path) = 0;  ///< before the file is made
  virtual void End() = 0;                           ///< it is in its place, or gone
};

/// A result file, or a stream for "-". A file is written beside its place under a temporary
/// name and takes its place in Commit(); without Commit(), and after an interruption, an old file
/// stays as it is. A symbolic link stays, and its target is made or replaced; what is no regular file (a
/// pipe, a device) is written to as it is.
class OutputFile {
 public:
  /// @param standard_output  what "-" stands for; null: a file of that name
  /// @param watcher          may be null; outlives the file
  /// @throws Refusal  it cannot be created
  OutputFile(std::string path, std::FILE* standard_output, FileWatcher* watcher);
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
  FileWatcher* watcher_;
  bool is_stream_;  ///< that somebody else closes
  std::FILE* file_ = nullptr;
};

}  // namespace corvath::study
