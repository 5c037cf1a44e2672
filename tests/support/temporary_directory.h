#pragma once

#include "support/files.h"

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>

namespace support {

/// A directory of its own for one test, removed with all that it holds.
class TemporaryDirectory {
 public:
  TemporaryDirectory()
      : path_(boost::filesystem::temp_directory_path() /
              boost::filesystem::unique_path("zelsolver-%%%%-%%%%-%%%%")) {
    boost::filesystem::create_directories(path_);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    boost::system::error_code ignored;
    boost::filesystem::remove_all(path_, ignored);
  }

  const boost::filesystem::path& GetPath() const { return path_; }
  /// The path of `name` inside.
  std::string File(const std::string& name) const { return (path_ / name).string(); }

 private:
  boost::filesystem::path path_;
};

}  // namespace support
