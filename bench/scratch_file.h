#pragma once

#include <boost/filesystem/operations.hpp>

#include <fstream>
#include <string>

namespace bench {

/// The path of a temporary file, which is removed in the end.
class ScratchFile {
 public:
  ScratchFile()
      : path_(boost::filesystem::temp_directory_path() /
              boost::filesystem::unique_path("zelsolver-%%%%-%%%%-%%%%")) {}
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() {
    boost::system::error_code ignored;
    boost::filesystem::remove(path_, ignored);
  }

  std::string Path() const { return path_.string(); }
  void Write(const std::string& bytes) const { std::ofstream(Path(), std::ios::binary) << bytes; }

 private:
  boost::filesystem::path path_;
};

}  // namespace bench
