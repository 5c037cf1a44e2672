#pragma once

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>

namespace corvath::algorithm::datatypes {

class VRDB;

/// The outer header of a project file: 12 bytes, then a JSON text that says what wrote the file.
struct FileHeader {
  std::uint32_t flag = 0;  ///< 0: the text does not count
  std::string text;        ///< UTF-8
};

/// Reads the outer header and leaves the stream where the archive begins. A file without one gives
/// flag 0, and the stream is back at its start. A header that the stream cuts off leaves the stream
/// failed; memory stays within what the stream holds, whatever length it claims.
FileHeader ReadFileHeader(std::istream& stream);

/// @throws std::length_error  the text has 4 GiB or more
void WriteFileHeader(std::ostream& stream, const FileHeader& header);

/// The JSON text with the key "current filename" set to the last element of `file`. A text that is
/// no JSON object stays unchanged.
std::string CompleteHeaderText(const std::string& text, const boost::filesystem::path& file);

/// The JSON text for a file that has none, from what the project tells of its writer.
/// @throws corvath::utils::runtime_error  the packed version is there without the version text
std::string BuildHeaderText(const VRDB& project, const boost::filesystem::path& file);

}  // namespace corvath::algorithm::datatypes
