#pragma once

#include "archive/archive_flags.h"
#include "project/file/file_header.h"

#include <boost/filesystem/path.hpp>

#include <iosfwd>
#include <string>
#include <string_view>

namespace corvath::algorithm::datatypes {

class VRDB;

/// What became of reading or writing a project file.
struct FileStatus {
  enum Code : int {
    kSuccessful = 0,
    kIncompatibleFileVersion = 1,
    kIncompatibleProductVersion = 2,
    kFileNotFound = 3,
    kInvalidStreamWhileReading = 4,
    kInvalidStreamWhileWriting = 5,
    kInvalidHeader = 6
  };

  int code = kSuccessful;
  boost::filesystem::path path;
  std::string message;  ///< GetStatusText(code)
};

/// The text of a status code; "unknown" for a number that is none.
const char* GetStatusText(int code);

/// The native path of a wide one: UTF-8.
boost::filesystem::path ToNativePath(const std::wstring& path);

/// Reads one project file. It waits for nobody: saving replaces a file in one step.
class ProjectFileReader {
 public:
  explicit ProjectFileReader(boost::filesystem::path path) : path_(std::move(path)) {}

  /// Fills `project` and `header`, the file's JSON text (or one that is built from the project).
  /// Returns false, with `status` set, if the file cannot be opened. No version number is compared.
  /// @throws boost::archive::archive_exception  the file is damaged; `project` is then half filled
  bool Read(VRDB& project, std::string& header, FileStatus& status) const;

 private:
  boost::filesystem::path path_;
};

/// The project of a file, with all that VRDB(path) does, which forwards here.
/// @throws std::runtime_error                `Error while reading ...`: it cannot be opened
/// @throws boost::archive::archive_exception  it is damaged
VRDB LoadProjectFile(const boost::filesystem::path& path);

/// The same of the bytes of a project file, from a stream that can seek.
/// @param path  what the header calls the file, and where it looks for files beside it
VRDB ReadProject(std::istream& stream, const boost::filesystem::path& path);

/// Forms of a file to be written. The defaults are those of a new project file.
struct ProjectFileForm {
  bool outer_header = true;        ///< false: the archive alone
  std::uint32_t header_flag = 1;   ///< 0: readers do not count the header text
  unsigned int archive_flags = 0;  ///< archive/archive_flags.h
};

/// Writes the bytes of a project file, and stamps the meta data of `project`.
/// @param path  what the header calls the file
/// @throws boost::archive::archive_exception  the stream fails
void WriteProject(std::ostream& stream, const VRDB& project, const boost::filesystem::path& path,
                  const ProjectFileForm& form = {});

/// Saves `project` to `path`, and stamps its meta data. The file is written under a temporary name
/// in the same directory, brought to the disk and renamed, so that a failure at any point leaves
/// what was there before; readers never see half a file. A symbolic link stays and its target is
/// replaced.
/// @throws std::runtime_error  `Error while writing ...`, with the reason
void SaveProjectFile(const VRDB& project, const boost::filesystem::path& path,
                     const ProjectFileForm& form = {});

/// Saves the bytes of a project file as they are, in the manner of SaveProjectFile().
void SaveProjectBytes(std::string_view bytes, const boost::filesystem::path& path);

}  // namespace corvath::algorithm::datatypes
