#pragma once

#include <boost/filesystem/path.hpp>

#include <string>

namespace corvath::utils {

/// @throws std::runtime_error  `Error while writing ...`, with the reason
[[noreturn]] void ThrowWriteError(const boost::filesystem::path& path, const std::string& reason);

/// Brings the names in the directory of `path` to the disk, after a file there took its place. The
/// file itself is safe already: failures do not count.
void SyncDirectoryOf(const boost::filesystem::path& path);

/// A file of its own under a name that nobody else uses, beside the target whose place it takes in
/// Commit(); without that it is removed again. A failure at any point leaves what was there before,
/// and readers never see half a file. A symbolic link stays, and its target is made or replaced;
/// what is no regular file (a device, a pipe) is refused.
class ReplacementFile {
 public:
  /// @throws std::runtime_error  see ThrowWriteError()
  explicit ReplacementFile(const boost::filesystem::path& target);
  ReplacementFile(const ReplacementFile&) = delete;
  ReplacementFile& operator=(const ReplacementFile&) = delete;
  ~ReplacementFile();

  /// The file to be written to, by its name.
  const std::string& GetName() const { return name_; }

  /// The file whose place it takes: behind a symbolic link the link's target.
  const boost::filesystem::path& GetTarget() const { return target_; }

  /// Brings the content to the disk, then puts the file in the target's place and under its mode.
  /// @throws std::runtime_error  see ThrowWriteError()
  void Commit();

 private:
  boost::filesystem::path target_;
  std::string name_;
  int file_ = -1;
  bool renamed_ = false;
};

}  // namespace corvath::utils
