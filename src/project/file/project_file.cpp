#include "project/file/project_file.h"

#include "archive/portable_iarchive.h"
#include "archive/portable_oarchive.h"
#include "foundation/replacement_file.h"
#include "foundation/text.h"
#include "project/file/writer_lock.h"
#include "project/records/detailed_information.h"
#include "project/vrdb.h"

#include <boost/filesystem/operations.hpp>
#include <boost/format.hpp>

#include <cerrno>
#include <fstream>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <streambuf>
#include <system_error>
#include <vector>

namespace corvath::algorithm::datatypes {
namespace {

namespace fs = boost::filesystem;

constexpr std::size_t kStreamBuffer = std::size_t{1} << 18;  // larger ones read no faster

/// Fills `project` and gives the header's text, the file's or one that is built from the project.
std::string ReadContent(std::istream& stream, VRDB& project, const fs::path& path) {
  const FileHeader outer = ReadFileHeader(stream);
  portable_binary_iarchive archive(stream);
  archive >> project;
  return outer.flag != 0 ? CompleteHeaderText(outer.text, path) : BuildHeaderText(project, path);
}

/// The file's name without its extension. Boost's own allocates where it must not throw.
std::string Stem(const fs::path& path) {
  std::string name = path.filename().native();
  const std::size_t dot = name.rfind('.');
  return dot == std::string::npos || name == "." || name == ".." ? name : name.substr(0, dot);
}

/// Tells the algorithm's record where files beside the project stand.
void SetFileContext(const VRDB& project, const fs::path& path) {
  const auto& info = project.GetAlgorithmInfo();
  if (info && info->GetDetailedInformation())
    info->GetDetailedInformation()->SetFileContext(path.parent_path(), Stem(path));
}

/// Passes bytes on and no locale. The beginning and the end of an archive set that of the buffer it
/// writes to; a file buffer whose bytes wait for a full disk breaks of it, and closing it throws.
class PassingBuffer : public std::streambuf {
 public:
  explicit PassingBuffer(std::streambuf& target) : target_(target) {}

 protected:
  int_type overflow(int_type c) override {
    return traits_type::eq_int_type(c, traits_type::eof())
               ? traits_type::not_eof(c)
               : target_.sputc(traits_type::to_char_type(c));
  }
  std::streamsize xsputn(const char* bytes, std::streamsize count) override {
    return target_.sputn(bytes, count);
  }
  int sync() override { return target_.pubsync(); }

 private:
  std::streambuf& target_;
};

/// Puts what `write` writes in the place of the file at `path`.
void Replace(const fs::path& path, const std::function<void(std::ostream&)>& write) {
  utils::ReplacementFile temporary(path);
  std::vector<char> buffer(kStreamBuffer);
  std::ofstream stream;
  stream.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  errno = 0;
  stream.open(temporary.GetName(), std::ios::out | std::ios::binary | std::ios::trunc);
  const auto throw_stream_error = [&path] {
    const std::string reason = errno == 0 ? "" : " (" + std::system_category().message(errno) + ')';
    utils::ThrowWriteError(path, GetStatusText(FileStatus::kInvalidStreamWhileWriting) + reason);
  };
  try {
    write(stream);
  } catch (const boost::archive::archive_exception& failure) {
    if (failure.code != boost::archive::archive_exception::output_stream_error) throw;
    throw_stream_error();
  }
  stream.close();
  if (!stream) throw_stream_error();

  const WriterLock lock(temporary.GetTarget());
  temporary.Commit();
}

}  // namespace

const char* GetStatusText(int code) {
  switch (code) {
    case FileStatus::kSuccessful:
      return "successful";
    case FileStatus::kIncompatibleFileVersion:
      return "incompatible file version";
    case FileStatus::kIncompatibleProductVersion:
      return "incompatible product version";
    case FileStatus::kFileNotFound:
      return "file not found";
    case FileStatus::kInvalidStreamWhileReading:
      return "invalid stream state while reading";
    case FileStatus::kInvalidStreamWhileWriting:
      return "invalid stream state while writing";
    case FileStatus::kInvalidHeader:
      return "invalid header found";
    default:
      return "unknown";
  }
}

fs::path ToNativePath(const std::wstring& path) {
  return utils::ToUtf8(path);
}

bool ProjectFileReader::Read(VRDB& project, std::string& header, FileStatus& status) const {
  const auto report = [&](FileStatus::Code code) {
    status = {code, path_, GetStatusText(code)};
    return code == FileStatus::kSuccessful;
  };
  std::vector<char> buffer(kStreamBuffer);
  std::ifstream stream;
  stream.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
  boost::system::error_code error;
  // A directory opens, but cannot be read; a pipe would wait for its writer.
  const bool is_file = fs::is_regular_file(path_, error);
  if (is_file) stream.open(path_.c_str(), std::ios::in | std::ios::binary);
  if (!is_file || !stream.good()) return report(FileStatus::kInvalidStreamWhileReading);

  header = ReadContent(stream, project, path_);
  return report(FileStatus::kSuccessful);
}

void WriteProject(std::ostream& stream, const VRDB& project, const fs::path& path,
                  const ProjectFileForm& form) {
  project.StampMetaData();  // the header shows the same time as the archive
  if (form.outer_header)
    WriteFileHeader(stream, {form.header_flag, BuildHeaderText(project, path)});
  PassingBuffer buffer(*stream.rdbuf());
  std::ostream passing(&buffer);
  portable_binary_oarchive archive(passing, form.archive_flags);
  archive << project;
  if (!passing.flush())
    throw boost::archive::archive_exception(boost::archive::archive_exception::output_stream_error);
}

void SaveProjectFile(const VRDB& project, const fs::path& path, const ProjectFileForm& form) {
  Replace(path, [&](std::ostream& stream) { WriteProject(stream, project, path, form); });
}

void SaveProjectBytes(std::string_view bytes, const fs::path& path) {
  Replace(path, [&](std::ostream& stream) {
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  });
}

VRDB LoadProjectFile(const fs::path& path) {
  VRDB project;
  FileStatus status;
  if (!ProjectFileReader(path).Read(project, project.GetHeader(), status))
    throw std::runtime_error(
        str(boost::format("Error while reading \"%1%\": %2%") % status.path % status.message));
  SetFileContext(project, path);
  return project;
}

VRDB ReadProject(std::istream& stream, const fs::path& path) {
  VRDB project;
  project.GetHeader() = ReadContent(stream, project, path);
  SetFileContext(project, path);
  return project;
}

// Declared by the class for those who open a project by its path; the class knows no files.
VRDB::VRDB(const std::wstring& path) : VRDB(LoadProjectFile(ToNativePath(path))) {}

}  // namespace corvath::algorithm::datatypes
